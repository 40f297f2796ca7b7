// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/AccessibilityTree.h"

#include <QList>
#include <QString>
#include <QStringList>

class QDBusArgument;

/// Name of one accessible object on the accessibility bus: the bus name of its program and its path there.
struct AtSpiObject
{
    QString owner;
    QString path;

    bool operator==(const AtSpiObject &) const = default;

    AccessibilityElement toElement() const
    {
        return {.kind = AccessibilityElement::Kind::node, .owner = owner, .path = path};
    }

    static AtSpiObject fromElement(const AccessibilityElement &element)
    {
        return {element.owner, element.path};
    }

    /// The application object of the program @p owner.
    static AtSpiObject root(const QString &owner);

    /// Whether both names may be put into a message (libdbus ends the program otherwise) and name an object.
    bool isValid() const;
};

/// Reads an object reference, "(so)".
const QDBusArgument &operator>>(const QDBusArgument &argument, AtSpiObject &object);

/// Families of accessibility implementations that behave differently.
enum class AtSpiToolkit { unknown, gtk3, gtk4, qt, libreOffice, gecko, chromium };

/// Which family a program is of, from what its application object says. The name of the program matters
/// because the office suite passes for GTK 3 when it wears its looks, and counts text differently all the
/// same.
AtSpiToolkit atSpiToolkit(const QString &toolkitName, const QString &version, const QString &program = {});

/// The states that matter here, by their bit.
enum class AtSpiState {
    active = 1,
    defunct = 6,
    editable = 7,
    focused = 12,
    multiLine = 17,
    showing = 25,
    managesDescendants = 31,
    readOnly = 43
};

/// What an object says of itself, all of one moment.
struct AtSpiDescription
{
    uint role = 0;
    quint64 states = 0;
    QStringList interfaces;
    AtSpiToolkit toolkit = AtSpiToolkit::unknown;

    bool is(AtSpiState state) const { return (states >> static_cast<int>(state)) & 1U; }
    bool lists(const QString &interface) const { return interfaces.contains(interface); }
};

/// The 64 state bits from the two words that cross the bus.
quint64 atSpiStates(const QList<uint> &words);
