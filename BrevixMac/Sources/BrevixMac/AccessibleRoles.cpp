// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibleRoles.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QWidget>

namespace {

/// Qt asks for each class of a widget, the most derived first; so what it knows better, such as a dialog,
/// never comes here as a plain widget.
QAccessibleInterface *make(const QString &className, QObject *object)
{
    static const QHash<QString, QAccessible::Role> roles{
        {QStringLiteral("ColorSwatches"), QAccessible::Grouping},
        {QStringLiteral("NewCategoryForm"), QAccessible::Grouping},
        {QStringLiteral("SettingsCard"), QAccessible::Grouping},
        {QStringLiteral("StatusCard"), QAccessible::Grouping},
        {QStringLiteral("ShareConfirmationBannerView"), QAccessible::Grouping},
        {QStringLiteral("InPanelMenu"), QAccessible::PopupMenu},
        {QStringLiteral("CategoryMenu"), QAccessible::PopupMenu},
    };
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget)
        return nullptr;
    if (className == u"QWidget" && widget->isWindow())
        return new QAccessibleWidget(widget, QAccessible::Window);
    const auto role = roles.constFind(className);
    return role == roles.constEnd() ? nullptr : new QAccessibleWidget(widget, *role);
}

} // namespace

void AccessibleRoles::install()
{
    QAccessible::installFactory(&make);
}
