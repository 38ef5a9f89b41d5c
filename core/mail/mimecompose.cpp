// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mimecompose.h"

#include <algorithm>
#include <array>

#include "common/text.h"
#include "mail/mimemessage.h"

namespace dorvane::mail {
namespace {

// Where the image name ends in `value` (lower case), counted as 1-based positions: the
// last character of the first extension found, or 3/4 when none counts. The order and the
// comparisons are deliberate and must stay: a missing ".png" leaves 3, so the ".bmp" search
// (which needs 4) is in effect never reached and bitmaps are never embedded.
std::size_t imageNameEnd(std::string_view value) {
    auto position = [value](std::string_view what) -> std::size_t {
        std::size_t hit = value.find(what);
        return hit == std::string_view::npos ? 0 : hit + 1;
    };
    std::size_t end = position(".gif") + 3;
    if (end == 3) {
        end = position(".jpg") + 3;
    }
    if (end == 3) {
        end = position(".jpeg") + 4;
    }
    if (end == 4) {
        end = position(".png") + 3;
    }
    if (end == 4) {
        end = position(".bmp") + 3;
    }
    return end;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

std::string percentDecoded(std::string_view in) {
    std::string out;
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (in[i] == '%' && i + 2 < in.size() && hexValue(in[i + 1]) >= 0 &&
            hexValue(in[i + 2]) >= 0) {
            out += static_cast<char>(hexValue(in[i + 1]) * 16 + hexValue(in[i + 2]));
            i += 2;
        } else {
            out += in[i];
        }
    }
    return out;
}

// Lower case for ASCII letters only, so that every position in the copy matches the original.
std::string asciiLower(std::string_view in) {
    std::string out(in);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return out;
}

bool startsWithIgnoreCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           text::equalsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace

std::string scanImageReferences(std::string_view input, std::vector<std::string>& imagePaths,
                                std::vector<std::string>& contentIds) {
    std::string html(input);
    int counter = kFirstContentId;
    constexpr std::array<std::string_view, 3> keywords = {"src=", "source=", "background="};
    for (std::string_view keyword : keywords) {
        std::string lower = asciiLower(html);
        std::size_t pos = lower.find(keyword);
        while (pos != std::string::npos) {
            bool rewritten = false;
            const std::size_t start = pos + keyword.size();
            const std::size_t close = lower.find('>', start);
            if (close != std::string::npos) {
                const std::string_view lowerValue =
                    std::string_view(lower).substr(start, close - start);
                if (lowerValue.find("cid:") == std::string_view::npos) {
                    const std::size_t end = imageNameEnd(lowerValue);
                    if (end > 3) {
                        std::string reference = html.substr(start, end);
                        std::erase(reference, '"');
                        const std::string path = text::replaceAll(reference, "/", "\\");
                        if (asciiLower(reference).find("http://") == std::string::npos &&
                            reference.find(':', 1) != std::string::npos) {
                            html =
                                text::replaceAll(html, reference, "cid:" + std::to_string(counter));
                            rewritten = true;
                            if (std::find(imagePaths.begin(), imagePaths.end(), path) ==
                                imagePaths.end()) {
                                imagePaths.push_back(path);
                                contentIds.push_back(std::to_string(counter));
                            }
                        }
                    }
                }
            }
            ++counter;
            if (rewritten) {
                lower = asciiLower(html);
            }
            pos = lower.find(keyword, pos + 1);
        }
    }
    return html;
}

std::filesystem::path imageFilePath(std::string_view listedPath) {
    std::string path = text::replaceAll(listedPath, "\\", "/");
    if (!startsWithIgnoreCase(path, "file:")) {
        return path;
    }
    std::string_view rest = std::string_view(path).substr(5);
    if (rest.substr(0, 2) == "//") {
        rest.remove_prefix(2);
        // An authority part: empty (file:///home/...) or "localhost".
        if (startsWithIgnoreCase(rest, "localhost/")) {
            rest.remove_prefix(9);
        }
    }
    return percentDecoded(rest);
}

std::string imageContentType(std::string_view path) {
    const std::string lower = asciiLower(path);
    if (lower.find(".gif") != std::string::npos) {
        return "image/gif";
    }
    if (lower.find(".jpg") != std::string::npos || lower.find(".jpeg") != std::string::npos) {
        return "image/jpg";
    }
    return {};
}

void addInlineImagePart(std::string_view path, std::string_view contentId, MimeMessage& message) {
    message.addPart();
    if (std::string type = imageContentType(path); !type.empty()) {
        message.setHeader("Content-Type", type);
    }
    // An unreadable file is not examined, as with any other image trouble: the part stays.
    (void)message.setBodyFromFile(imageFilePath(path));
    message.setHeader("Content-Length", "0");
    message.setHeader("Content-disposition", "Inline");
    message.setHeader("Content-ID", "<" + std::string(contentId) + ">");
    message.setHeader("Content-Transfer-Encoding", "base64");
}

std::string attachmentFileName(std::string_view subject) {
    std::string name;
    for (char c : subject) {
        if (c == ' ' || c == '/' || c == '\\') {
            name += '-';
        } else if (c != ':' && c != '#') {
            name += c;
        }
    }
    return name + ".dvx";
}

std::string envelopeRecipients(std::string_view recipient, std::string_view bccAddresses) {
    std::string recipients(recipient);
    if (!bccAddresses.empty()) {
        const std::string blind = text::replaceAll(bccAddresses, ";", ",");
        recipients = recipients.empty() ? blind : recipients + ", " + blind;
    }
    return recipients;
}

void composeDocumentMail(const DocumentMail& mail, MimeMessage& message) {
    message.clear();
    std::vector<std::string> imagePaths;
    std::vector<std::string> contentIds;
    const std::string html = scanImageReferences(mail.html, imagePaths, contentIds);

    message.setSender(mail.sender);
    message.setSubject(mail.subject);
    message.setRecipient(mail.recipient);

    message.addPart();
    const std::string& words = mail.extras.plainText.empty() ? mail.subject : mail.extras.plainText;
    // A cover text may run long on a line: it always goes quoted-printable.
    const bool ascii =
        mail.extras.plainText.empty() &&
        std::all_of(words.begin(), words.end(), [](unsigned char c) { return c < 0x80; });
    if (ascii) {
        message.setHeader("Content-Type", "text/plain");
        message.setHeader("Content-Transfer-Encoding", "7bit");
    } else {
        // 7bit cannot carry the subject's own letters: name the charset and encode them.
        message.setHeader("Content-Type", "text/plain; charset=utf-8");
        message.setHeader("Content-Transfer-Encoding", "quoted-printable");
    }
    message.setText(words);

    message.addPart();
    message.setHeader("Content-Type", "text/html");
    message.setHeader("Content-Transfer-Encoding", "quoted-printable");
    // The text part comes first, so readers must be told that the document is the root.
    const std::string documentId = "<" + message.newContentId() + ">";
    message.setHeader("Content-ID", documentId);
    message.setText(html);

    for (std::size_t i = 0; i < imagePaths.size(); ++i) {
        addInlineImagePart(imagePaths[i], contentIds[i], message);
    }

    message.selectMessageHeader();
    if (mail.returnReceipt) {
        const bool bracketed = mail.sender.find('<') != std::string::npos;
        message.setHeader("Disposition-Notification-To",
                          bracketed ? mail.sender : "<" + mail.sender + ">");
    }
    message.setHeader("Content-Type", "multipart/related; boundary=\"" + message.boundary() +
                                          "\"; type=\"text/html\"; start=\"" + documentId + "\"");

    if (!mail.attachment.empty()) {
        (void)message.attachFile(mail.attachment);
    }
    for (const AttachedFile& file : mail.extras.files) {
        message.attachBytes(file.name, file.type, file.subtype, file.bytes);
    }
}

}  // namespace dorvane::mail
