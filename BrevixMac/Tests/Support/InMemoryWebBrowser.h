// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/WebBrowser.h"

#include <QList>

/// A browser that only notes what it was to open, and is missing on request.
class InMemoryWebBrowser : public WebBrowser
{
public:
    QList<QUrl> opened;
    bool isMissing = false;

    void open(const QUrl &url) override
    {
        opened.append(url);
        if (isMissing)
            QMetaObject::invokeMethod(this, &WebBrowser::failed, Qt::QueuedConnection);
    }
};
