// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>

/// An editor whose accessibility only pretends that its text can be edited: every edit is accepted and none
/// is carried out, as by many a widget that draws its text itself. Keys and pastes work.
class DeafField final : public QPlainTextEdit
{
    Q_OBJECT

public:
    using QPlainTextEdit::QPlainTextEdit;

    static void installAccessibility();
};
