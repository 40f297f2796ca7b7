// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "Foundation/PropertyList.h"

void readForeignBytes(const QByteArray &bytes)
{
    const auto dictionary = PropertyList::parseDictionary(bytes);
    if (!dictionary)
        return;
    const auto again = PropertyList::parseDictionary(PropertyList::serialize(*dictionary));
    require(again.has_value(), "what was read can be written and read again");
    require(again->keys() == dictionary->keys(), "no key is lost by writing");
}
