// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What the writer of the crash test writes, and where; shared with the test that reads it back.
namespace StoredState {

inline const QString defaultsFile = QStringLiteral("/defaults.plist");
inline const QString databaseFile = QStringLiteral("/library.sqlite");
inline const QString collection = QStringLiteral("artifacts/app/users/u/prompts");

inline constexpr char started = '!';
inline constexpr char preferences = 'p';
inline constexpr char recents = 'r';
inline constexpr char session = 's';
inline constexpr char database = 'd';

} // namespace StoredState
