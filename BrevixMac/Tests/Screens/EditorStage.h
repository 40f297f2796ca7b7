// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorDesk.h"
#include "EditorFrame.h"
#include "MenuBarPromptEditorView.h"
#include "PromptBodyTextView.h"
#include "PromptEditorForm.h"
#include "PromptEditorModel.h"
#include "PromptEditorView.h"
#include "Stillness.h"
#include "TextField.h"
#include "Theme.h"
#include "ThemedButton.h"
#include "VariableChips.h"

#include "Support/Waiting.h"

#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

enum class EditorKind { panel, window };

/// One of the two prompt editors on screen over an EditorDesk, driven by keys and clicks.
struct PromptStage
{
    EditorDesk desk;
    std::unique_ptr<MenuBarPromptEditorView> panel;
    std::unique_ptr<PromptEditorView> window;

    void open(EditorKind kind)
    {
        desk.start();
        show(kind);
    }

    void show(EditorKind kind)
    {
        if (kind == EditorKind::panel) {
            panel = std::make_unique<MenuBarPromptEditorView>(*desk.appState);
            // As large as the panel that it is a part of.
            const Theme &theme = Theme::shared();
            const QSize grown(theme.scaled(Theme::panelWidth), theme.scaled(Theme::panelHeight));
            panel->resize(grown.boundedTo(panel->screen()->availableSize() - QSize(16, 16)));
        } else {
            window = std::make_unique<PromptEditorView>(*desk.appState);
        }
        reopen();
    }

    void reopen()
    {
        top().hide();
        top().show();
        top().activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&top()));
    }

    /// Ends the program and starts it anew, with what is on disk.
    void restart(EditorKind kind)
    {
        panel.reset();
        window.reset();
        open(kind);
    }

    QWidget &top() { return panel ? static_cast<QWidget &>(*panel) : *window; }
    PromptEditorForm &form() { return panel ? panel->form() : window->form(); }
    PromptEditorModel &model() { return panel ? panel->model() : window->model(); }
    EditorFrame &frame() { return panel ? panel->frame() : window->frame(); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *focus = top().focusWidget();
        QTest::keyClick(focus ? focus : &top(), key, modifiers);
    }

    void type(const QString &text) { QTest::keyClicks(top().focusWidget(), text); }

    /// Puts the texts in as a paste would.
    void fill(const QString &title, const QString &text)
    {
        form().titleField().setFocus();
        form().titleField().selectAll();
        form().titleField().clear();
        form().titleField().insert(title);
        form().body().setFocus();
        form().body().selectAll();
        form().body().insertPlainText(text);
        form().body().report();
        model().setTitle(title);
    }

    void optimize()
    {
        form().optimizeButton().click();
        ASSERT_TRUE(waitUntil([this] { return !model().isOptimizing(); }));
    }

    /// Lets everything that is on its way arrive.
    void settle() { EXPECT_TRUE(waitUntilAtRest(top())); }
};
