// SPDX-License-Identifier: GPL-3.0-or-later
// The settings store's file as the program reads it: the store, every value of the table as
// `settings list` shows it, the check-up's judgement of each stored value, and what each
// subsystem and each preferences dialog reads from it.
#include "platform/settings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzzkit.h"
#include "handheld/folderdevice.h"
#include "import/assignment.h"
#include "mail/preferences.h"
#include "webconnector/config.h"
#include "webupdate/webupdate.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = fuzz::scratch() / "DV01.ini";
    fuzz::writeFile(file, fuzz::text(data, size));
    const platform::SettingsStore store(file);
    for (const platform::KnownSetting& known : platform::kKnownSettings) {
        (void)store.value(known.section, known.key);
        (void)store.intValue(known.section, known.key);
    }
    // The check-up: values it does not know are named; when there are none, each is judged.
    const auto entries = store.entries();
    if (std::all_of(entries.begin(), entries.end(), [](const auto& e) {
            return platform::knownSetting(e.section, e.key) != nullptr;
        })) {
        for (const platform::SettingsStore::Change& entry : entries) {
            (void)platform::checkSetting(entry.section, entry.key, entry.value);
        }
    }
    (void)platform::loadMailSettings(store);
    (void)mail::MailPreferencesModel(store).changes();
    (void)imports::loadImportSettings(store);
    (void)handheld::deviceFolder(store);
    (void)webupdate::siteAddress(store);
    std::string folder;
    (void)webconnector::chosenConnection(store, &folder);
    (void)webconnector::ServiceSettings::load(store).listenText();
    (void)webconnector::ConnectionPreferences::load(store);
    return 0;
}
