// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScreen>
#include <QWidget>

namespace WindowSize {

/// What a window opens with: @p wanted, or as much of it as nine tenths of its screen allow.
inline QSize onScreen(const QWidget &window, const QSize &wanted)
{
    return wanted.boundedTo(window.screen()->availableSize() * 9 / 10);
}

} // namespace WindowSize
