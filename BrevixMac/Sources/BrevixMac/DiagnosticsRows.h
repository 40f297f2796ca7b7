// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QObject>

class AppState;
class SettingsCard;
class TextLabel;
class ThemedButton;

/// The rows of the settings' advanced card: what is configured and captured, and the diagnostics text to read
/// and to copy.
class DiagnosticsRows final : public QObject
{
    Q_OBJECT

public:
    /// Adds its rows to @p card. All must outlive this object.
    DiagnosticsRows(AppState &appState, SettingsCard &card, QObject *parent);

    void refresh();
    void collapse() { setOpen(false); }

    /// The value beside @p label.
    QString value(const QString &label) const;
    QString shownText() const; ///< empty while the disclosure is closed
    ThemedButton &copyButton() const { return *m_copy; }
    ThemedButton &showButton() const { return *m_show; }

private:
    void addValueRows(SettingsCard &card);
    void addTextRows(SettingsCard &card);
    void setOpen(bool isOpen);

    AppState &m_appState;
    QMap<QString, TextLabel *> m_values;
    ThemedButton *m_copy = nullptr;
    ThemedButton *m_show = nullptr;
    TextLabel *m_text = nullptr;
};
