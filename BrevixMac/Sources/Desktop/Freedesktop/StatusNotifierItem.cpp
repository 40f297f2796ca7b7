// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QtEndian>

#include <algorithm>
#include <array>

namespace {

constexpr std::array iconSizes{16, 22, 24, 32, 48, 64};

StatusNotifierPixmap pixmap(const QImage &source)
{
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierPixmap pixmap{.width = image.width(), .height = image.height(), .bytes = {}};
    pixmap.bytes.resize(qsizetype(image.width()) * image.height() * qsizetype(sizeof(quint32)));
    char *to = pixmap.bytes.data();
    for (int line = 0; line < image.height(); ++line) {
        qToBigEndian<quint32>(image.constScanLine(line), image.width(), to);
        to += qsizetype(image.width()) * qsizetype(sizeof(quint32));
    }
    return pixmap;
}

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmaps>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
    static int count = 0;
    m_service = QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
                    .arg(QCoreApplication::applicationPid())
                    .arg(++count);
}

StatusNotifierItem::~StatusNotifierItem()
{
    if (!m_isPublished)
        return;
    m_bus.unregisterObject(objectPath());
    m_bus.unregisterService(m_service);
}

bool StatusNotifierItem::publish()
{
    if (!m_bus.registerObject(objectPath(), this, QDBusConnection::ExportScriptableContents))
        return false;
    m_isPublished = m_bus.registerService(m_service);
    if (!m_isPublished)
        m_bus.unregisterObject(objectPath());
    return m_isPublished;
}

void StatusNotifierItem::setIcon(const QIcon &icon)
{
    const auto changed = pixmaps(icon);
    if (changed == m_pixmaps)
        return;
    m_pixmaps = changed;
    Q_EMIT NewIcon();
}

void StatusNotifierItem::setToolTip(const QString &toolTip)
{
    if (toolTip == m_toolTip)
        return;
    m_toolTip = toolTip;
    Q_EMIT NewToolTip();
}

StatusNotifierPixmaps StatusNotifierItem::pixmaps(const QIcon &icon)
{
    StatusNotifierPixmaps pixmaps;
    if (icon.isNull())
        return pixmaps;
    for (const int size : iconSizes) {
        const auto next = pixmap(icon.pixmap(QSize(size, size), 1.0).toImage());
        // An icon made of pixels gives its largest size again and again.
        if (next.width > 0 && !pixmaps.contains(next))
            pixmaps.append(next);
    }
    return pixmaps;
}

QString StatusNotifierItem::identifier() const
{
    return QCoreApplication::applicationName();
}

QString StatusNotifierItem::title() const
{
    return QGuiApplication::applicationDisplayName();
}

StatusNotifierToolTip StatusNotifierItem::toolTip() const
{
    return {.iconName = {}, .pixmaps = {}, .title = m_toolTip, .description = {}};
}

void StatusNotifierItem::Activate(int x, int y)
{
    Q_EMIT pressed({x, y});
}

void StatusNotifierItem::SecondaryActivate(int x, int y)
{
    Q_EMIT pressed({x, y});
}

void StatusNotifierItem::ContextMenu(int x, int y)
{
    Q_EMIT pressed({x, y});
}

void StatusNotifierItem::Scroll(int, const QString &)
{
    // There is nothing to scroll through; hosts want the method to exist.
}
