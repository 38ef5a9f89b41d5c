// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane sandbox — the data behind schema.h: what the sandbox knows of qbXML, as text.
//
// The order tables hold one aggregate per entry: `Name = Child Child ...`. A child is written
// `Name[:type][?|*|+][@since][!until][#gN]`: no type means an aggregate described under its
// own name; `?` optional, `*` any number, `+` one or more; `@20` = since qbXML 2.0, `!60` =
// gone from 6.0; `#a1`/`#a2` = branches of an optional choice (`#A1` for a required one);
// `~` = interleaved repeating alternatives (line kinds that may alternate freely). An element
// that moved between versions is listed at both places (VendorRet's Notes: `!30`, then `@30`).
// Types: id s s41 date dt amt price qty pct bool int dur guid ref addr e.EnumName.
// An enumeration is written `Name = Value Value ...`. Lines starting with blanks continue the
// entry above.
#pragma once

#include <span>
#include <string>

#include "qbsandbox/schema.h"

namespace dorvane::qbsandbox {

// Every order table, the ones written out and the ones whose shape repeats across kinds.
std::string schemaTableText();
const char* schemaEnumText();
// The DateMacro values of a version (2.x has fewer).
std::span<const char* const> dateMacros(Version version);

}  // namespace dorvane::qbsandbox
