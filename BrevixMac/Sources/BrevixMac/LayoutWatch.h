// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

class QWidget;

/// Has a widget's layout arranged anew whenever the widget has another size, or something in it wants
/// another.
class LayoutWatch final : public QObject
{
public:
    /// Calls @p arrange after the layout of @p widget, which owns this object, has been told.
    LayoutWatch(QWidget *widget, std::function<void()> arrange);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void()> m_arrange;
};
