// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiBus.h"

/// Looks through the program @p owner for the object that has the keyboard focus now: asks its active window
/// for focused objects where it can be asked, and walks its tree breadth first where it cannot. Ends with
/// nothing after 250 ms. An editable object goes before any other; containers that only pretend are passed
/// over.
QCoro::Task<std::optional<AtSpiObject>> findFocusedObject(std::shared_ptr<AtSpiBus> bus, QString owner);
