// SPDX-License-Identifier: GPL-3.0-or-later
#include "mail/mimemessage.h"

#include <fstream>
#include <memory>
#include <mutex>

#include <gmime/gmime.h>

#include "common/files.h"
#include "common/text.h"

namespace dorvane::mail {
namespace {

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using GPtr = std::unique_ptr<T, GObjectUnref>;

struct FormatOptionsFree {
    void operator()(GMimeFormatOptions* options) const { g_mime_format_options_free(options); }
};

void initGMime() {
    static std::once_flag once;
    std::call_once(once, [] { g_mime_init(); });
}

// The domain of an address, for the Message-Id.
std::string domainOf(std::string_view address) {
    auto at = address.rfind('@');
    if (at == std::string_view::npos) {
        return "localhost";
    }
    std::string domain(address.substr(at + 1));
    while (!domain.empty() && (domain.back() == '>' || domain.back() == ' ')) {
        domain.pop_back();
    }
    return domain.empty() ? "localhost" : domain;
}

void setContent(GMimePart* part, const char* data, std::size_t size) {
    GPtr<GMimeStream> stream(size ? g_mime_stream_mem_new_with_buffer(data, size)
                                  : g_mime_stream_mem_new());
    GPtr<GMimeDataWrapper> wrapper(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part, wrapper.get());
}

// Puts one address (bare or with a display name) into an address list.
void putAddress(InternetAddressList* list, std::string_view address) {
    std::string text(text::trim(address));
    if (text.empty()) {
        // Touching an empty list would write the header with no address.
        if (internet_address_list_length(list) > 0) {
            internet_address_list_clear(list);
        }
        return;
    }
    internet_address_list_clear(list);
    GPtr<InternetAddressList> parsed(internet_address_list_parse(nullptr, text.c_str()));
    if (parsed && internet_address_list_length(parsed.get()) > 0) {
        internet_address_list_append(list, parsed.get());
        return;
    }
    GPtr<InternetAddress> mailbox(internet_address_mailbox_new(nullptr, text.c_str()));
    internet_address_list_add(list, mailbox.get());
}

}  // namespace

struct MimeMessage::Impl {
    GPtr<GMimeMessage> message;
    GMimeMultipart* multipart = nullptr;  // owned by `message`
    GMimeObject* current = nullptr;       // nullptr: the message header
    std::string sender;

    Impl() { reset(); }

    void reset() {
        message.reset(g_mime_message_new(TRUE));
        GPtr<GMimeMultipart> related(g_mime_multipart_new_with_subtype("related"));
        g_mime_message_set_mime_part(message.get(), GMIME_OBJECT(related.get()));
        multipart = related.get();
        current = nullptr;
        sender.clear();
        // The local zone is looked up once: asking GLib for it anew costs more than the rest
        // of a new message together.
        static GTimeZone* const local = g_time_zone_new_local();
        GDateTime* now = g_date_time_new_now(local);
        g_mime_message_set_date(message.get(), now);
        g_date_time_unref(now);
    }

    std::string write() const {
        std::unique_ptr<GMimeFormatOptions, FormatOptionsFree> options(
            g_mime_format_options_clone(nullptr));
        g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
        GPtr<GMimeStream> stream(g_mime_stream_mem_new());
        g_mime_object_write_to_stream(GMIME_OBJECT(message.get()), options.get(), stream.get());
        GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
        return std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
    }
};

MimeMessage::MimeMessage() {
    initGMime();
    m_impl = std::make_unique<Impl>();
}

MimeMessage::~MimeMessage() = default;

void MimeMessage::setSender(std::string_view address) {
    putAddress(g_mime_message_get_from(m_impl->message.get()), address);
    m_impl->sender = std::string(address);
    char* id = g_mime_utils_generate_message_id(domainOf(address).c_str());
    g_mime_message_set_message_id(m_impl->message.get(), id);
    g_free(id);
}

void MimeMessage::setSubject(std::string_view subject) {
    g_mime_message_set_subject(m_impl->message.get(), std::string(subject).c_str(), "utf-8");
    // GMime encodes and folds the value but trims its end; the blanks that end a document's
    // subject belong to it, so they go back at the end of the written value.
    const std::size_t last = subject.find_last_not_of(" \t");
    const std::string_view trailing = subject.substr(last == std::string_view::npos ? 0 : last + 1);
    GMimeHeader* header = g_mime_header_list_get_header(
        g_mime_object_get_header_list(GMIME_OBJECT(m_impl->message.get())), "Subject");
    const char* raw = header ? g_mime_header_get_raw_value(header) : nullptr;
    if (trailing.empty() || !raw) {
        return;
    }
    std::string value(raw);
    while (!value.empty() && (value.back() == '\n' || value.back() == '\r' || value.back() == ' ' ||
                              value.back() == '\t')) {
        value.pop_back();
    }
    if (value.empty()) {
        value.push_back(' ');  // the blank after the colon
    }
    value += std::string(trailing) + "\n";
    g_mime_header_set_raw_value(header, value.c_str());
}

void MimeMessage::setRecipient(std::string_view address) {
    putAddress(g_mime_message_get_addresses(m_impl->message.get(), GMIME_ADDRESS_TYPE_TO), address);
}

void MimeMessage::addPart() {
    // A new part starts as text/plain inside GMime; without its header line it is written
    // with no Content-Type at all until the composer sets one.
    GPtr<GMimePart> part(g_mime_part_new());
    g_mime_object_remove_header(GMIME_OBJECT(part.get()), "Content-Type");
    g_mime_multipart_add(m_impl->multipart, GMIME_OBJECT(part.get()));
    m_impl->current = GMIME_OBJECT(part.get());
}

void MimeMessage::selectMessageHeader() {
    m_impl->current = nullptr;
}

void MimeMessage::setHeader(std::string_view name, std::string_view value) {
    GMimeObject* target = m_impl->current;
    if (!target) {
        target = text::equalsIgnoreCase(name, "Content-Type") ? GMIME_OBJECT(m_impl->multipart)
                                                              : GMIME_OBJECT(m_impl->message.get());
    }
    const std::string n(name);
    const std::string v(value);
    g_mime_object_set_header(target, n.c_str(), v.c_str(), "utf-8");
}

void MimeMessage::setText(std::string_view text) {
    if (m_impl->current && GMIME_IS_PART(m_impl->current)) {
        setContent(GMIME_PART(m_impl->current), text.data(), text.size());
    }
}

bool MimeMessage::setBodyFromFile(const std::filesystem::path& file) {
    auto bytes = files::readAll(file);
    setText(bytes ? std::string_view(*bytes) : std::string_view());
    return bytes.ok();
}

std::string MimeMessage::newContentId() {
    char* id = g_mime_utils_generate_message_id(domainOf(m_impl->sender).c_str());
    std::string out(id);
    g_free(id);
    return out;
}

std::string MimeMessage::boundary() {
    if (!g_mime_multipart_get_boundary(m_impl->multipart)) {
        g_mime_multipart_set_boundary(m_impl->multipart, nullptr);
    }
    return g_mime_multipart_get_boundary(m_impl->multipart);
}

bool MimeMessage::attachFile(const std::filesystem::path& file) {
    auto bytes = files::readAll(file);
    attachBytes(file.filename().string(), "application", "octet-stream",
                bytes ? *bytes : std::string());
    return bytes.ok();
}

void MimeMessage::attachBytes(std::string_view fileName, std::string_view type,
                              std::string_view subtype, std::string_view bytes) {
    GPtr<GMimePart> part(
        g_mime_part_new_with_type(std::string(type).c_str(), std::string(subtype).c_str()));
    g_mime_part_set_filename(part.get(), std::string(fileName).c_str());
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    setContent(part.get(), bytes.data(), bytes.size());
    g_mime_multipart_add(m_impl->multipart, GMIME_OBJECT(part.get()));
}

int MimeMessage::save(const std::filesystem::path& file) const {
    // A scratch file rewritten for every message: no need to wait for the disk.
    const std::string text = m_impl->write();
    const Status saved = files::writeAtomically(file, {text}, 0644u, files::Durability::Scratch);
    return saved ? 0 : saved.error().code;
}

std::string MimeMessage::toString() const {
    return m_impl->write();
}

void MimeMessage::clear() {
    m_impl->reset();
}

std::string fileAddress(const std::filesystem::path& file) {
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(file, ec);
    gchar* uri = g_filename_to_uri((ec ? file : absolute).c_str(), nullptr, nullptr);
    if (!uri) {
        return {};
    }
    std::string out(uri);
    g_free(uri);
    return out;
}

}  // namespace dorvane::mail
