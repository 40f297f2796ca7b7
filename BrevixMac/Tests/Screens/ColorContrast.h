// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

/// How well colours can be told apart, after the accessibility guidelines for web content.
namespace ColorContrast {

inline double channel(double value)
{
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

inline double luminance(const QColor &color)
{
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
}

/// Of two opaque colours: 1 for the same, 21 for black and white.
inline double contrast(const QColor &one, const QColor &other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

} // namespace ColorContrast
