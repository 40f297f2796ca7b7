// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class FlowLayout;

/// The variables found in a text, as chips that wrap onto new lines. Of very many it shows the first and how
/// many more there are.
class VariableChips final : public QWidget
{
    Q_OBJECT

public:
    static constexpr qsizetype mostChips = 24;

    explicit VariableChips(QWidget *parent = nullptr);

    void setText(const QString &promptText);

    QStringList chips() const;

private:
    FlowLayout *m_flow;
};
