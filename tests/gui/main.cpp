// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane GUI tests — runs every Qt Test suite of the window in one QApplication.
#include <QApplication>

#include "guitestsupport.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    int failures = 0;
    failures += dorvane::test::runForm3Tests(argc, argv);
    failures += dorvane::test::runQtUiPortTests(argc, argv);
    failures += dorvane::test::runRemindersWindowTests(argc, argv);
    failures += dorvane::test::runHistoryWindowTests(argc, argv);
    return failures == 0 ? 0 : 1;
}
