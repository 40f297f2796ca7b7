// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>

/// Whether something at the D-Bus server @p address answers the first line of the authentication handshake
/// within 250 ms. Asked before Qt connects, because Qt waits for the handshake on the thread that serves
/// every bus of the process. Addresses other than Unix sockets are trusted to answer.
QCoro::Task<bool> isBusAnswering(QString address);
