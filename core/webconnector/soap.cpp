// SPDX-License-Identifier: GPL-3.0-or-later
#include "webconnector/soap.h"

#include "xml/xml.h"

namespace dorvane::webconnector {
namespace {

std::string localName(const std::string& qualified) {
    const auto colon = qualified.find(':');
    return colon == std::string::npos ? qualified : qualified.substr(colon + 1);
}

std::string envelope(std::string_view body) {
    std::string out =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
        "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"><soap:Body>";
    out += body;
    out += "</soap:Body></soap:Envelope>";
    return out;
}

std::string response(std::string_view method, std::string_view inner) {
    std::string m(method);
    return envelope("<" + m + "Response xmlns=\"" + kServiceNamespace + "\"><" + m + "Result>" +
                    std::string(inner) + "</" + m + "Result></" + m + "Response>");
}

}  // namespace

const std::string& SoapCall::param(const std::string& name) const {
    static const std::string kNone;
    const auto found = params.find(name);
    return found == params.end() ? kNone : found->second;
}

Result<SoapCall> parseSoapCall(std::string_view body) {
    xml::ParseOptions options;
    options.keepBlanks = true;  // a parameter of blanks is a value
    options.refuseInternalSubset = true;
    auto doc = xml::Document::parse(body, options);
    if (!doc) {
        return Error{1, "The message is not well-formed XML: " + doc.error().description};
    }
    const xml::Variables ns{{"soap", kSoapNamespace}, {"svc", kServiceNamespace}};
    const xml::Node call = doc->selectOne(
        "/*[local-name()='Envelope' and namespace-uri()=$soap]"
        "/*[local-name()='Body' and namespace-uri()=$soap]/*",
        ns);
    if (!call) {
        return Error{1, "The message is not a SOAP 1.1 envelope with a body."};
    }
    if (call.valueOf("namespace-uri()") != kServiceNamespace) {
        return Error{1, "The call is not in the namespace http://developer.intuit.com/."};
    }
    SoapCall out;
    out.method = localName(call.name());
    for (const xml::Node& param : call.childElements()) {
        out.params[localName(param.name())] = param.text();
    }
    return out;
}

std::string soapStringResult(std::string_view method, std::string_view value) {
    return response(method, xml::escapeText(value));
}

std::string soapIntResult(std::string_view method, int value) {
    return response(method, std::to_string(value));
}

std::string soapArrayResult(std::string_view method, const std::vector<std::string>& values) {
    std::string inner;
    for (const std::string& v : values) {
        inner += "<string>" + xml::escapeText(v) + "</string>";
    }
    return response(method, inner);
}

std::string soapFault(std::string_view code, std::string_view text) {
    return envelope("<soap:Fault><faultcode>soap:" + std::string(code) +
                    "</faultcode><faultstring>" + xml::escapeText(text) +
                    "</faultstring></soap:Fault>");
}

}  // namespace dorvane::webconnector
