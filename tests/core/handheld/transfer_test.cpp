// SPDX-License-Identifier: GPL-3.0-or-later
// Whole files between the program folder and a device folder: the buffer's limits both ways,
// the truncated and hostile files that must not count as fetched, a missing file, replacing,
// the case-blind path mapping and the connection that fails without a folder.
#include <gtest/gtest.h>

#include "handheld/folderdevice.h"
#include "handheld/pocketpc.h"
#include "platform/programfolder.h"
#include "support/testsupport.h"

namespace dorvane::handheld {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

constexpr const char* kDeviceFile = "\\Program Files\\TimeTrack\\data.xml";

// A well-formed handheld file of exactly `size` bytes (size ≥ 40).
std::string documentOfSize(std::size_t size) {
    const std::string head = "<Dorvane_PDA><TimeTracks>";
    const std::string tail = "</TimeTracks></Dorvane_PDA>";
    return head + std::string(size - head.size() - tail.size(), ' ') + tail;
}

class TransferTest : public ::testing::Test {
protected:
    TransferTest() {
        fs::create_directories(program);
        fs::create_directories(deviceRoot);
    }

    fs::path deviceData() const { return deviceRoot / "Program Files" / "TimeTrack" / "data.xml"; }
    fs::path fetched() const { return program / kDataFromPdaFile; }

    bool fetch() {
        PocketPC pocket(device, ui, folder);
        EXPECT_TRUE(pocket.connectDevice());
        const bool ok = pocket.copyFileFromDevice(kDeviceFile, fetched().string());
        pocket.disconnectDevice();
        return ok;
    }

    bool send(const std::string& content) {
        const fs::path out = program / "dataout.xml";
        writeFile(out, content);
        PocketPC pocket(device, ui, folder);
        EXPECT_TRUE(pocket.connectDevice());
        const bool ok = pocket.copyFileToDevice(out.string(), kDeviceFile);
        pocket.disconnectDevice();
        return ok;
    }

    test::TempDir home;
    fs::path program = home / "program";
    fs::path deviceRoot = home / "device";
    test::ScriptedUi ui;
    platform::ProgramFolder folder{program};
    FolderDevice device{deviceRoot};
};

TEST_F(TransferTest, SendsUpToTheBufferAndReplacesTheDeviceFile) {
    // Folders are made on the way; an existing file is replaced whole (create-always).
    ASSERT_TRUE(send(std::string(5000, 'x')));
    EXPECT_EQ(readFile(deviceData()), std::string(5000, 'x'));
    EXPECT_TRUE(send("short"));
    EXPECT_EQ(readFile(deviceData()), "short");
    EXPECT_TRUE(ui.messages.empty());

    EXPECT_TRUE(send(std::string(kTransferBufferSize, 'a')));
    EXPECT_EQ(fs::file_size(deviceData()), kTransferBufferSize);
    EXPECT_TRUE(ui.messages.empty());

    // One byte more does not fit: nothing is written, the copy still answers yes, and the
    // person is told why the handheld's file is empty.
    EXPECT_TRUE(send(std::string(kTransferBufferSize + 1, 'a')));
    EXPECT_EQ(fs::file_size(deviceData()), 0u);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_NE(ui.messages[0].text.find("16386 bytes do not fit"), std::string::npos);
}

TEST_F(TransferTest, FetchKeepsOnlyWholeSafeDocuments) {
    struct Case {
        const char* name;
        std::string content;
        bool fetched;
        const char* message;  // the start of the one message shown, "" for none
    };
    const std::string bomb =
        "<?xml version=\"1.0\"?><!DOCTYPE Dorvane_PDA [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b "
        "\"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
        "<Dorvane_PDA><TimeTracks>&c;&c;&c;&c;</TimeTracks></Dorvane_PDA>";
    const Case cases[] = {
        {"the whole read", documentOfSize(kMaxDeviceRead), true, ""},
        {"cut at the read's limit", documentOfSize(20000), false, "Cannot process file "},
        {"not well-formed", "<Dorvane_PDA><TimeTracks></Dorvane_PDA>", false,
         "Cannot process file "},
        {"entity declarations", bomb, false, "Cannot process file "},
        {"external entity", "<!DOCTYPE d [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><d>&x;</d>",
         false, "Cannot process file "},
        {"an empty file", "", true, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ui.messages.clear();
        fs::remove(fetched());
        fs::create_directories(deviceData().parent_path());
        writeFile(deviceData(), c.content);
        EXPECT_EQ(fetch(), c.fetched);
        EXPECT_EQ(fs::exists(fetched()), c.fetched);
        if (*c.message) {
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_EQ(ui.messages[0].text.rfind(c.message, 0), 0u) << ui.messages[0].text;
        } else {
            EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
        }
        EXPECT_EQ(readFile(deviceData()), c.content);  // the handheld's file is only read
    }
    // The document arrives as parsed; the truncated one says where the limit is.
    writeFile(deviceData(), documentOfSize(20000));
    ui.messages.clear();
    fetch();
    EXPECT_NE(ui.messages.at(0).text.find("Only the first 16384 bytes of " +
                                          std::string(kDeviceFile) + " can be read."),
              std::string::npos);
    writeFile(deviceData(), documentOfSize(100));
    ASSERT_TRUE(fetch());
    EXPECT_NE(readFile(fetched()).find("<Dorvane_PDA>"), std::string::npos);
}

TEST_F(TransferTest, DevicePathsMapOntoTheFolderInAnyCase) {
    // What a handheld mounted from a phone may look like: other cases, no exact match.
    fs::create_directories(deviceRoot / "program files" / "TIMETRACK");
    writeFile(deviceRoot / "program files" / "TIMETRACK" / "Data.XML", "<Dorvane_PDA/>");
    EXPECT_TRUE(fetch());
    EXPECT_TRUE(send("<Dorvane_PDA><TimeTracks/></Dorvane_PDA>"));
    EXPECT_EQ(readFile(deviceRoot / "program files" / "TIMETRACK" / "Data.XML"),
              "<Dorvane_PDA><TimeTracks/></Dorvane_PDA>");
    EXPECT_FALSE(fs::exists(deviceRoot / "Program Files"));

    // A path that would leave the folder, or is no full path, names nothing.
    for (const char* path : {"\\..\\outside.xml", "\\Program Files\\.\\x", "relative.xml"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(device.localPath(path));
        PocketPC pocket(device, ui, folder);
        ASSERT_TRUE(pocket.connectDevice());
        EXPECT_FALSE(pocket.copyFileToDevice((program / "dataout.xml").string(), path));
        EXPECT_EQ(ui.messages.back().text, "CeCreateFile Error 161 occurred.");
        pocket.disconnectDevice();
    }
    EXPECT_FALSE(fs::exists(home / "outside.xml"));
}

TEST_F(TransferTest, MissingFilesAndMissingDevices) {
    EXPECT_FALSE(fetch());
    EXPECT_EQ(ui.texts(), std::vector<std::string>{"File " + std::string(kDeviceFile) +
                                                   " Not Found. Operation Aborted."});
    EXPECT_FALSE(fs::exists(fetched()));

    // No folder configured, or one that is not there: the session does not open, and the
    // program ends.
    for (const fs::path& root : {fs::path(), home / "unplugged"}) {
        SCOPED_TRACE(root.string());
        ui.messages.clear();
        FolderDevice absent(root);
        PocketPC pocket(absent, ui, folder);
        int ended = 0;
        pocket.setEndApplication([&] { ++ended; });
        EXPECT_FALSE(pocket.connectDevice());
        EXPECT_EQ(ended, 1);
        EXPECT_EQ(ui.texts(), std::vector<std::string>{
                                  "Failed to initialise RAPI with device with error 1167"});
    }
}

}  // namespace
}  // namespace dorvane::handheld
