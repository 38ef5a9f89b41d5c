// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a MIME message under construction, and its file in internet format.
//
// The composer builds a message the way a message component is driven: set sender, subject
// and recipient, add body parts one after another (the last added is the current one), set
// headers and bodies on the current part, select the message header (part 0) to set headers
// on the whole message, read the boundary, attach files, save. Header names are kept exactly
// as given; bodies are encoded when the message is written, following each part's
// "Content-Transfer-Encoding" header. The message itself is `multipart/related`.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace dorvane::mail {

class MimeMessage final {
public:
    MimeMessage();
    ~MimeMessage();
    MimeMessage(const MimeMessage&) = delete;
    MimeMessage& operator=(const MimeMessage&) = delete;

    // The From mailbox ("a@example.com" or "Name <a@example.com>").
    void setSender(std::string_view address);
    // Non-ASCII text is encoded per RFC 2047.
    void setSubject(std::string_view subject);
    // The To mailbox; an empty address leaves the message without a To header.
    void setRecipient(std::string_view address);

    // Adds an empty body part (no headers at all) and makes it current.
    void addPart();
    // Makes the message header current: headers set next apply to the whole message.
    void selectMessageHeader();
    // Sets a header on the current part, replacing one of the same name. "Content-Type" on
    // the message header is the multipart's own type line.
    void setHeader(std::string_view name, std::string_view value);
    // The current part's body (raw; encoded on writing).
    void setText(std::string_view text);
    // The current part's body becomes the file's bytes; false when the file cannot be read
    // (the body is then empty).
    bool setBodyFromFile(const std::filesystem::path& file);

    // A new content id ("unique@sender-domain", without angle brackets) for a part that the
    // message refers to.
    std::string newContentId();
    // The boundary the message will be written with; generated on first use.
    std::string boundary();

    // Adds the file as an attachment part (application/octet-stream, base64, with its name).
    // False when the file cannot be read.
    bool attachFile(const std::filesystem::path& file);
    // Adds bytes as an attachment part of the given MIME type (base64, with the file name).
    void attachBytes(std::string_view fileName, std::string_view type, std::string_view subtype,
                     std::string_view bytes);

    // Writes the message in internet format with CR LF line ends. Answers 0, or the errno
    // value of the failed write.
    int save(const std::filesystem::path& file) const;
    // The message as `save` writes it.
    std::string toString() const;

    // Forgets everything, ready for the next message.
    void clear();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// A local file as the "file://" address an HTML body refers to it by ("/srv/my logo.gif"
// gives "file:///srv/my%20logo.gif"); composing the message embeds such an image inline.
// Empty when the path cannot be written as an address.
std::string fileAddress(const std::filesystem::path& file);

}  // namespace dorvane::mail
