// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiObject.h"

/// Numbers of the roles this mechanism looks at.
enum class AtSpiRole : uint {
    comboBox = 11,
    desktopFrame = 14,
    filler = 20,
    frame = 23,
    glassPane = 24,
    internalFrame = 28,
    layeredPane = 30,
    optionPane = 36,
    pageTab = 37,
    panel = 39,
    passwordText = 40,
    rootPane = 46,
    scrollPane = 49,
    terminal = 60,
    text = 61,
    unknown = 67,
    viewport = 68,
    window = 69,
    paragraph = 73,
    application = 75,
    autocomplete = 76,
    editBar = 77,
    entry = 79,
    documentFrame = 82,
    section = 85,
    documentText = 94,
    documentWeb = 95,
    redundantObject = 86,
};

/// The one translation of roles: AXRole of an object so described.
QString axRole(const AtSpiDescription &description);

/// AXSubrole: "AXSecureTextField" for password fields, "AXTerminal" for terminals, empty for everything else.
QString axSubrole(const AtSpiDescription &description);

/// Whether a user can type text into the object: an editable field, a password field or a terminal.
bool takesText(const AtSpiDescription &description);

/// Whether the object can be seen, as far as its toolkit tells. FOCUSED is not asked for: programs take it
/// back as soon as a hotkey is pressed.
bool isOnScreen(const AtSpiDescription &description);

/// Whether the role is one of those containers that toolkits report as focused beside, or instead of, the
/// widget that really has the focus.
bool isFocusNoise(const AtSpiDescription &description);
