// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QWidget>

class ThemedButton;

/// The buttons of the selected row: insert, copy, share. Shows labels while they leave the row's title enough
/// room, and symbols alone after that. Their accessible names are always the full labels.
class PickerRowActions final : public QWidget
{
    Q_OBJECT

public:
    explicit PickerRowActions(QWidget *parent = nullptr);

    /// What the buttons say and whether inserting is possible.
    void describe(const PickerResult &result, const PickerTargetStatus &status, bool isInserting);

    /// Chooses the widest faces that leave a title its room in a row of @p rowWidth; returns the width it
    /// takes.
    int fit(int rowWidth);

    ThemedButton &insertButton() const { return *m_insert; }
    ThemedButton &copyButton() const { return *m_copy; }
    ThemedButton &shareButton() const { return *m_share; }

Q_SIGNALS:
    void insertRequested();
    void copyRequested();

private:
    ThemedButton *m_insert;
    ThemedButton *m_copy;
    ThemedButton *m_share;
};
