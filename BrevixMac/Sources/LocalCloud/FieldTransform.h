// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QJsonArray>
#include <QJsonObject>

namespace Cloud {

/// Carries @p transforms ("fieldTransforms": server time, increment, maximum, minimum, array union and
/// removal) out on @p fields at the time @p now, in their order, and gives each one's result. Throws
/// RequestRefused.
QJsonArray transformFields(QJsonObject &fields, const QJsonArray &transforms, Timestamp now);

} // namespace Cloud
