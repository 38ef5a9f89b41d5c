// SPDX-License-Identifier: GPL-3.0-or-later
// Request templates and their placeholders.
#include "qbgateway/templates.h"

#include <gtest/gtest.h>

namespace dorvane::qbgateway {
namespace {

TEST(Templates, DateMacroFillsEveryPlaceholder) {
    EXPECT_EQ(buildDateMacro("LastFiscalQuarter"), "<DateMacro>LastFiscalQuarter</DateMacro>");
    EXPECT_EQ(buildDateMacro("ALL"), "");
    const std::string twice = "<A><DateMacro></DateMacro></A><B><DateMacro></DateMacro></B>";
    EXPECT_EQ(fillDateMacro(twice, "LastWeek"),
              "<A><DateMacro>LastWeek</DateMacro></A><B><DateMacro>LastWeek</DateMacro></B>");
    EXPECT_EQ(fillDateMacro(twice, "ALL"), "<A></A><B></B>");
    EXPECT_EQ(fillDateMacro("<NoFilter/>", "LastWeek"), "<NoFilter/>");
    // The placeholder is matched exactly, case and all.
    EXPECT_EQ(fillDateMacro("<datemacro></datemacro>", "LastWeek"), "<datemacro></datemacro>");
}

TEST(Templates, ListIdPlaceholderTakesAnIdOrTheWholeList) {
    const std::string t = "<CustomerQueryRq><ListID>IDTYPE</ListID></CustomerQueryRq>";
    EXPECT_EQ(fillListId(t, "80000001-1193754437"),
              "<CustomerQueryRq><ListID>80000001-1193754437</ListID></CustomerQueryRq>");
    // An empty id still filters (on nothing); only the whole-list fill drops the filter.
    EXPECT_EQ(fillListId(t, ""), "<CustomerQueryRq><ListID></ListID></CustomerQueryRq>");
    EXPECT_EQ(fillWholeList(t), "<CustomerQueryRq></CustomerQueryRq>");
}

}  // namespace
}  // namespace dorvane::qbgateway
