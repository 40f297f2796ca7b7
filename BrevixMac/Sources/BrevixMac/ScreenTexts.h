// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Sentences that more than one control shows.
namespace ScreenTexts {

/// The tip of a control whose screen does not exist yet.
inline QString notAvailableYet()
{
    return QStringLiteral("Not available in this version yet.");
}

} // namespace ScreenTexts
