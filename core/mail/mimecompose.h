// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the pieces of a document mail: inline images, the exchange-file name, the
// envelope recipients and the message layout.
//
// A document mail is `multipart/related`: part 1 "text/plain" (7bit) carries the subject,
// part 2 "text/html" (quoted-printable) the document with its local images rewritten to
// "cid:" references, then one base64 part per image, then the exchange file (`.dvx`) when
// there is one. The HTML part carries a Content-ID that the message's type line names as
// its root (RFC 2387 `type="text/html"` and `start`), so that readers show the document and
// not the text part in front of it. `Mailer::composeAndSendSmtp` (mailer.h) sends it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace dorvane::mail {

class MimeMessage;

// The first content id of every message.
inline constexpr int kFirstContentId = 1234;

// Finds the images that the HTML refers to with "src=", "source=" or "background=" and
// rewrites every reference to a local file (an absolute path such as C:/logo.gif or a
// "file:" address; no "http://") into "cid:" + content id. Appends each new path (the
// reference with "/" turned into "\") and its content id to the two lists, and answers the
// rewritten HTML. Content ids count from 1234 over every attribute occurrence examined,
// embedded or not. Only names ending in .gif, .jpg, .jpeg or .png count; a .bmp reference
// is always left as it is, and so are relative paths and web addresses.
std::string scanImageReferences(std::string_view html, std::vector<std::string>& imagePaths,
                                std::vector<std::string>& contentIds);

// The file to read for a listed image path. The list keeps the reference as written with
// "\" for "/" (the form the message layout is defined on); on this system the separators
// turn back into "/". A "file:" address ("file:///home/me/logo%20big.gif",
// "file://localhost/...") loses its scheme and host part, keeps the root slash, and has its
// %XX escapes decoded. A Windows drive path (C:/logo.gif) stays as it is and is read
// relative to the working folder; like a missing file, it then gives an empty image part.
std::filesystem::path imageFilePath(std::string_view listedPath);

// "image/gif" when the lower-cased path contains ".gif", "image/jpg" for ".jpg" or ".jpeg",
// else empty (the part then has no Content-Type header).
std::string imageContentType(std::string_view path);

// Adds the image as a new current part: its Content-Type (when known), then the file's
// bytes as body, then "Content-Length" "0", "Content-disposition" "Inline", "Content-ID"
// "<id>" and "Content-Transfer-Encoding" "base64", in that order. A file that cannot be
// read gives an empty body; it is not reported.
void addInlineImagePart(std::string_view path, std::string_view contentId, MimeMessage& message);

// The exchange file's name: the subject with every blank turned into "-", every ":" and
// "#" removed, then ".dvx" ("Invoice: #1041  Date: 2002-05-01  " gives
// "Invoice-1041--Date-2002-05-01--.dvx"). "/" and "\" also become "-", since they would
// name a folder.
std::string attachmentFileName(std::string_view subject);

// The envelope recipients: the recipient, then the blind copies with ";" turned into ",",
// joined by ", " when both are there.
std::string envelopeRecipients(std::string_view recipient, std::string_view bccAddresses);

// A file carried after the exchange file (a PDF copy of the document).
struct AttachedFile {
    std::string name;
    std::string type = "application";
    std::string subtype = "pdf";
    std::string bytes;
};

// What the user added to the program's own message (documentextras.h); empty, the message is
// the program's own.
struct MessageExtras {
    // The text part's words instead of the subject (the cover text).
    std::string plainText;
    std::vector<AttachedFile> files;
};

// What one document mail is made of.
struct DocumentMail {
    std::string sender;
    std::string recipient;
    std::string subject;
    std::string html;  // as rendered; image references are rewritten while composing
    // The exchange file in the program folder, or empty for none.
    std::filesystem::path attachment;
    // Adds "Disposition-Notification-To: <sender>" to the message header.
    bool returnReceipt = false;
    MessageExtras extras;
};

// Builds the message in layout order into `message` (which is cleared first).
void composeDocumentMail(const DocumentMail& mail, MimeMessage& message);

}  // namespace dorvane::mail
