// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane fuzzing — the whole program for the targets that drive its import window: the
// Application a front end builds, over the fuzz program folder and a QuickBooks that answers
// the list queries as the embedded sandbox's demo company answered them, and books nothing.
//
// The answers are a response folder (the program's own "responses:DIR" connection) filled
// once per process by asking a fresh demo company in the sandbox, after the start-up's default
// records, the requests of the program folder that the import window, its preferences, the
// duplicate guard and the handheld sync send. It holds no answer to any add request: QuickBooks
// refuses every add, so an input goes as far as the program takes it before anything would be
// booked, and no input changes what the next one finds.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/text.h"
#include "fuzzkit.h"
#include "import/booking.h"
#include "qbgateway/responsefolder.h"
#include "qbsandbox/sandbox.h"
#include "quietui.h"
#include "shell/application.h"
#include "xml/xml.h"

namespace dorvane::fuzz {

// The handheld's folder. The environment is set for the whole process once: the handheld's
// folder ($DORVANE_DEVICE_DIR) and an empty settings folder ($XDG_CONFIG_HOME), so that every
// setting is its default.
inline const std::filesystem::path& handheldFolder() {
    static const std::filesystem::path folder = [] {
        const auto device = scratch() / "device";
        const auto config = scratch() / "config";
        std::filesystem::create_directories(device / "Program Files" / "TimeTrack");
        std::filesystem::create_directories(config);
        setenv("DORVANE_DEVICE_DIR", device.c_str(), 1);
        setenv("XDG_CONFIG_HOME", config.c_str(), 1);
        return device;
    }();
    return folder;
}

inline const std::filesystem::path& quickBooksAnswers() {
    static const std::filesystem::path answers = [] {
        const auto folder = scratch() / "answers";
        std::filesystem::create_directories(folder);
        testkit::QuietUi ui(0);
        handheldFolder();
        shell::Application demo(ui, {programFolder().string()},
                                qbsandbox::processorFactory(scratch() / "sandbox"));
        demo.defaultRecords().ensureDefaultRecords();
        auto ask = [&](const std::string& request, const std::string& answer) {
            writeFile(folder / (answer + "Rs.xml"), demo.gateway().processRequest(request));
        };
        auto askTemplate = [&](const char* name, const char* answer) {
            const auto request = demo.folder().readProgramFile(name);
            // As the customer list asks: every customer, not one by its id.
            ask(text::replaceAll(request ? *request : std::string(), "<ListID>IDTYPE</ListID>", ""),
                answer);
        };
        askTemplate("CustomerGetRq.xml", "CustomerQuery");
        askTemplate("VendorGetRq.xml", "VendorQuery");
        askTemplate("BankAccountGetRq.xml", "AccountQuery");
        askTemplate("ItemGetRq.xml", "ItemQuery");
        askTemplate("PDADataGetRq.xml", "EmployeeQuery");
        // The duplicate guard's queries, answered with one booked document of the kind.
        for (const imports::BookedKind& kind : imports::kBookedKinds) {
            const std::string type = imports::bookedType(kind);
            ask("<?xml version=\"1.0\" ?><?qbxml version=\"2.0\"?><QBXML><QBXMLMsgsRq "
                "onError=\"continueOnError\"><" +
                    type + "QueryRq requestID=\"1\"><MaxReturned>1</MaxReturned></" + type +
                    "QueryRq></QBXMLMsgsRq></QBXML>",
                type + "Query");
        }
        return folder;
    }();
    return answers;
}

// The name of the first employee QuickBooks lists, whom the handheld sync is run for.
inline const std::string& firstEmployee() {
    static const std::string name = [] {
        auto answer = xml::Document::load(quickBooksAnswers() / "EmployeeQueryRs.xml");
        return answer ? answer->valueOf("//EmployeeRet/Name") : std::string();
    }();
    return name;
}

// The program for one input, every box answered with its default.
struct Program {
    Program()
        : app(ui, {programFolder().string()},
              qbgateway::responseFolderFactory(quickBooksAnswers())) {}

    testkit::QuietUi ui{0};
    shell::Application app;
};

}  // namespace dorvane::fuzz
