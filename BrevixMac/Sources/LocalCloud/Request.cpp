// SPDX-License-Identifier: GPL-3.0-or-later
#include "Request.h"

#include <algorithm>

namespace Cloud {

QByteArray Request::header(QByteArrayView lowerCaseName) const
{
    for (const auto &[name, value] : headers)
        if (name == lowerCaseName)
            return value;
    return {};
}

int Request::headerCount(QByteArrayView lowerCaseName) const
{
    return int(std::count_if(headers.begin(), headers.end(),
                             [&](const auto &header) { return header.first == lowerCaseName; }));
}

} // namespace Cloud
