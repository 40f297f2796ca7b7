// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QUrlQuery>

namespace Cloud {

/// The pairs of an URL's query or of an "application/x-www-form-urlencoded" body, where "+" is a space.
inline QUrlQuery parseForm(QByteArray encoded)
{
    return QUrlQuery(QString::fromUtf8(encoded.replace('+', "%20")));
}

inline QString formValue(const QUrlQuery &form, const QString &key)
{
    return form.queryItemValue(key, QUrl::FullyDecoded);
}

} // namespace Cloud
