// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QWidget>

class QBoxLayout;
class QVBoxLayout;
class TextLabel;

/// One row of a settings card: a title, a subtitle and notes at the left, controls at the right. Where both
/// have no room side by side, the controls stand below.
class SettingsRow final : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsRow(const QString &title, const QString &subtitle = {}, QWidget *parent = nullptr);

    void setTitle(const QString &title);
    void setSubtitle(const QString &subtitle); ///< an empty one takes no room

    /// A line below everything else in @p ink, for what has happened; an empty one takes no room.
    void setNote(const QString &note, Theme::Color ink);

    /// Puts @p control at the right end, in the order of the calls.
    void addControl(QWidget *control);

    /// The same for a text, which takes half of the room and wraps.
    void addStretchingControl(QWidget *control);

    /// A row of less height: for a list of values.
    void setCompact(bool isCompact);

    QString title() const;
    QString subtitle() const;
    QString note() const;

private:
    void onThemeChanged();
    void arrange();

    TextLabel *m_title;
    TextLabel *m_subtitle;
    TextLabel *m_note;
    QVBoxLayout *m_column;
    QBoxLayout *m_row;
    QBoxLayout *m_controls;
    bool m_isCompact = false;
    bool m_isStretching = false;
};
