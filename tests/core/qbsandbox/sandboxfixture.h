// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — a sandbox QuickBooks of its own for each test, reached through the real
// request processor.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "qbsandbox/demo.h"
#include "qbsandbox/sandbox.h"
#include "qbsandbox/state.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

class SandboxTest : public ::testing::Test {
protected:
    static constexpr const char* kToday = "2026-11-18";

    void SetUp() override {
        ::setenv("DORVANE_SANDBOX_DIR", m_dir.path().c_str(), 1);
        ::setenv("DORVANE_TODAY", kToday, 1);
        ::unsetenv("DORVANE_SANDBOX_FAULTS");
    }

    // Opens a copy of the demo company (generated once per test program).
    void useDemo() {
        copyDemoCompany(company());
        ASSERT_TRUE(qbsandbox::writeState(m_dir.path(), {true, company()}));
    }

    void useEmptyCompany() {
        qbsandbox::createEmptyCompany(company(), "Test Company");
        ASSERT_TRUE(qbsandbox::writeState(m_dir.path(), {true, company()}));
    }

    std::filesystem::path company() const { return m_dir / "company.dvq"; }
    const std::filesystem::path& folder() const { return m_dir.path(); }

    // One exchange as the gateway makes it: the six operations on a new processor.
    Result<std::string> exchange(const std::string& request) {
        auto processor = qbsandbox::processorFactory()();
        if (!processor) {
            return processor.error();
        }
        auto& p = **processor;
        if (auto s = p.openConnection("", "Dorvane"); !s) {
            return s.error();
        }
        auto ticket = p.beginSession("", qbgateway::FileMode::DoNotCare);
        if (!ticket) {
            return ticket.error();
        }
        auto answer = p.processRequest(*ticket, request);
        if (!answer) {
            return answer.error();
        }
        EXPECT_TRUE(p.endSession(*ticket));
        EXPECT_TRUE(p.closeConnection());
        return answer;
    }

    // The answer of a message that must get through; the test fails otherwise.
    xml::Document ask(const std::string& body, const std::string& version = "13.0",
                      const std::string& onError = "stopOnError") {
        auto answer = exchange(message(body, version, onError));
        EXPECT_TRUE(answer) << (answer ? "" : answer.error().description);
        if (!answer) {
            return xml::Document::withRoot("QBXML");
        }
        m_lastText = *answer;
        auto doc = xml::Document::parse(*answer);
        EXPECT_TRUE(doc);
        return doc ? std::move(*doc) : xml::Document::withRoot("QBXML");
    }

    static std::string message(const std::string& body, const std::string& version = "13.0",
                               const std::string& onError = "stopOnError") {
        return "<?xml version=\"1.0\" ?>\n<?qbxml version=\"" + version +
               "\"?>\n<QBXML>\n<QBXMLMsgsRq onError=\"" + onError + "\">\n" + body +
               "\n</QBXMLMsgsRq>\n</QBXML>\n";
    }

    // statusCode/statusSeverity/statusMessage of the n-th response element.
    static std::string status(const xml::Document& doc, int n = 1) {
        xml::Node rs = doc.selectOne("/QBXML/QBXMLMsgsRs/*[" + std::to_string(n) + "]");
        return rs.attribute("statusCode") + " " + rs.attribute("statusSeverity") + " " +
               rs.attribute("statusMessage");
    }

    std::string m_lastText;
    TempDir m_dir;
};

}  // namespace dorvane::test
