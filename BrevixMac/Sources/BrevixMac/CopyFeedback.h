// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

class ThemedButton;

/// Has @p button call @p copy, which tells whether the text is on the clipboard now, and say the outcome in
/// place of its label for two seconds, spoken by screen readers too. The room of the button stays.
void tellWhetherCopied(ThemedButton &button, std::function<bool()> copy);
