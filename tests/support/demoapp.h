// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane tests — the program in a folder of its own over a fresh copy of the demo company in
// the embedded QuickBooks, as the person finds it after start-up.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "qbsandbox/state.h"
#include "shell/application.h"
#include "support/mailservers.h"
#include "support/testsupport.h"
#include "xml/xml.h"

namespace dorvane::test {

class DemoAppTest : public ::testing::Test {
protected:
    // Fills the program folder and opens `company`, a copy of the demo company; the program
    // itself starts with startApp().
    explicit DemoAppTest(const std::string& company = "demo.dvq") {
        copyProgramFiles(program);
        useCompany(company);
    }

    // Opens a fresh copy of the demo company under `name`.
    void useCompany(const std::string& name) {
        copyDemoCompany(home / name);
        ASSERT_TRUE(qbsandbox::writeState(home / "sandbox", {true, home / name}));
    }
    void startApp() {
        app = std::make_unique<shell::Application>(ui, shell::StartOptions{program.string()});
    }

    // One request's answer from the open company.
    xml::Document query(const std::string& body) {
        auto doc = xml::Document::parse(app->gateway().processRequest(
            "<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
            "onError=\"continueOnError\">" +
            body + "</QBXMLMsgsRq></QBXML>"));
        return doc ? std::move(*doc) : xml::Document::withRoot("QBXML");
    }

    TempDir home;
    std::filesystem::path program = home / "program";
    ScopedEnvironment sandbox{"DORVANE_SANDBOX_DIR", (home / "sandbox").string()};
    ScopedEnvironment today{"DORVANE_TODAY", "2026-11-18"};
    ScopedEnvironment config{"XDG_CONFIG_HOME", (home / "cfg").string()};
    ScopedEnvironment noFaults{"DORVANE_SANDBOX_FAULTS", std::nullopt};
    ScriptedUi ui;
    std::unique_ptr<shell::Application> app;
};

}  // namespace dorvane::test
