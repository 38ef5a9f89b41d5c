// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — conversions between core's UTF-8 text and QString.
#pragma once

#include <string>
#include <string_view>

#include <QString>

namespace dorvane::gui {

inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string toStdString(const QString& text) {
    return text.toStdString();
}

}  // namespace dorvane::gui
