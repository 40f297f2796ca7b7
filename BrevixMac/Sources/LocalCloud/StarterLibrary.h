// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QString>

namespace Cloud {

class Database;

/// Gives the local user something to start with: the categories, prompts and skills of the built-in starter
/// library. Happens once in the life of a database, so that what the user deletes stays deleted. Throws
/// StorageError.
void seedStarterLibrary(Database &database, const QString &libraryAppID, Timestamp now);

} // namespace Cloud
