// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QUrl>

/// The user's web browser. Main thread only; waits for nothing.
class WebBrowser : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Starts to open @p url; an attempt that is still under way is no longer followed.
    virtual void open(const QUrl &url) = 0;

Q_SIGNALS:
    /// The latest page could not be opened. Never emitted from inside open().
    void failed();
};
