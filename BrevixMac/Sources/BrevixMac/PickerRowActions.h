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
    /// Whether the labels name the kind of item: "Insert Prompt", or only "Insert". The quiet ones have no
    /// filled button, because the screen has its own, and always only copy.
    enum class Wording { namesTheKind, plain, quiet };

    explicit PickerRowActions(Wording wording, QWidget *parent = nullptr);

    /// What is going on around the row.
    struct Circumstances
    {
        PickerTargetStatus target = {};
        bool isInserting = false;
        bool isSharing = false; ///< this very item
    };

    /// What the buttons say and which of them can be used.
    void describe(const PickerResult &result, const Circumstances &circumstances);

    /// Chooses the widest faces that leave a title its room in a row of @p rowWidth; returns the width it
    /// takes.
    int fit(int rowWidth);

    ThemedButton &insertButton() const { return *m_insert; }
    ThemedButton &copyButton() const { return *m_copy; }
    ThemedButton &shareButton() const { return *m_share; }

Q_SIGNALS:
    void insertRequested();
    void copyRequested();
    void shareRequested();

private:
    void describeInsert(bool isSkill, const Circumstances &circumstances);
    void describeCopy(bool isSkill, bool isReady);
    void describeShare(bool isSkill, bool isSharing);

    Wording m_wording;
    ThemedButton *m_insert;
    ThemedButton *m_copy;
    ThemedButton *m_share;
};
