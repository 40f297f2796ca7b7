// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QString>

namespace Cloud {

class Database;

/// Gives the user @p uid something to start with: the categories, prompts and skills of the built-in starter
/// library. Happens once in the life of an account, so that what the user deletes stays deleted. Throws
/// StorageError.
void seedStarterLibrary(Database &database, const QString &libraryAppID, const QString &uid, Timestamp now);

} // namespace Cloud
