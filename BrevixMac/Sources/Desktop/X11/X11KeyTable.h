// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

/// Physical key positions. A key number names a position on the ANSI keyboard whatever letter the active
/// layout puts there (0 is the key right of Caps Lock, 35 the tenth of the upper letter row); an X key code
/// is the kernel's number of that position plus 8.
namespace X11KeyTable {

/// The X key code of key number @p keyNumber (0 to 126); nothing where PC keyboards have no such key.
std::optional<quint8> keyCode(quint32 keyNumber);

/// The key number of X key code @p keyCode; nothing for keys that the table does not know.
std::optional<quint32> keyNumber(quint32 keyCode);

} // namespace X11KeyTable
