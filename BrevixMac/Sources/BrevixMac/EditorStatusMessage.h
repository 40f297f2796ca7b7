// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What an editor says under its form.
struct EditorStatusMessage
{
    QString text;
    bool isError = false;

    bool operator==(const EditorStatusMessage &) const = default;
};

using SkillEditorStatusMessage = EditorStatusMessage;
