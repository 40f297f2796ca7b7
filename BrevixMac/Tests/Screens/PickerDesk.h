// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/AppBench.h"

/// The bench with a signed-in user and a text editor in front: everything a picker needs.
class PickerDesk : public AppBench
{
public:
    static constexpr qint64 editorPid = 4242;

    PickerDesk();

    /// The library of the examples: categories, prompts with and without variables, skills.
    void addSampleLibrary();

    /// Makes the coordinator and waits for the library when somebody is signed in, unless told otherwise.
    void start();

    /// Captures the editor's text field as a hotkey press would; the picker's present action runs.
    void press();

    bool isSignedIn = true;
    bool isConfigured = true; ///< whether the application knows its cloud
    bool waitsForLibrary = true;

    InMemoryAccessibilityTree::Field &field() { return tree.fields[QStringLiteral("/field")]; }
};
