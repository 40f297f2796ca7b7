// SPDX-License-Identifier: GPL-3.0-or-later
#include "TabWalk.h"

#include "InPanelMenu.h"
#include "ScreenChecks.h"
#include "ShareConfirmationBannerView.h"

#include "Support/Waiting.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QImage>
#include <QScrollArea>
#include <QTest>

#include <algorithm>

namespace {

constexpr int mostPresses = 120;
constexpr int slack = 6;     // two halos
constexpr int ringReach = 4; // how far out of a control its ring may be drawn
constexpr int ringDepth = 6; // and how far into it
constexpr int leastDifference = 16;

// Order

QRect united(const QRect *begin, const QRect *end)
{
    QRect all;
    for (; begin != end; ++begin)
        all |= *begin;
    return all;
}

bool isRead(const QRect *begin, const QRect *end)
{
    if (end - begin < 2)
        return true;
    // What lies on something, as the button of a list's row does, is read after it.
    if (begin->contains(united(begin + 1, end)) && isRead(begin + 1, end))
        return true;
    for (const QRect *cut = begin + 1; cut != end; ++cut) {
        const QRect before = united(begin, cut);
        const QRect after = united(cut, end);
        const bool isAbove = before.bottom() < after.top() + slack;
        const bool isLeft = before.right() < after.left() + slack;
        if ((isAbove || isLeft) && isRead(begin, cut) && isRead(cut, end))
            return true;
    }
    return false;
}

QRect placeOf(const QWidget &widget)
{
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

bool isFloating(const QWidget &widget)
{
    return qobject_cast<const InPanelMenu *>(&widget) ||
           qobject_cast<const ShareConfirmationBannerView *>(&widget);
}

/// What scrolls a control, or floats over the screen with it, and so has an order of its own.
const QWidget *groundOf(const QWidget &control)
{
    const QWidget *parent = control.parentWidget();
    while (parent && !isFloating(*parent) && !qobject_cast<const QScrollArea *>(parent))
        parent = parent->parentWidget();
    return parent;
}

// The ring

/// The edge of a control as it is drawn now; of a list, all of it.
QImage edgeOf(const QWidget &control)
{
    QWidget &window = *control.window();
    QRect place(control.mapTo(&window, QPoint()), control.size());
    place.adjust(-ringReach, -ringReach, ringReach, ringReach);
    place &= window.rect();
    if (place.isEmpty())
        return {};
    QImage image(place.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    window.render(&image, QPoint(), place);
    if (qobject_cast<const QAbstractItemView *>(&control))
        return image;
    const int depth = ringReach + ringDepth;
    for (int y = depth; y < image.height() - depth; ++y) {
        for (int x = depth; x < image.width() - depth; ++x)
            image.setPixel(x, y, 0);
    }
    return image;
}

int differingPixels(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return 0;
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            const int difference = std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                             std::abs(qBlue(a) - qBlue(b))});
            count += difference >= leastDifference;
        }
    }
    return count;
}

bool isCovered(const QWidget &control)
{
    const QWidget *const ground = groundOf(control);
    for (const QWidget *over : control.window()->findChildren<QWidget *>()) {
        if (over != ground && isFloating(*over) && over->isVisible() &&
            placeOf(*over).intersects(placeOf(control)))
            return true;
    }
    return false;
}

/// Whether the focus, which @p control has, is drawn. Leaves the focus where it is.
bool showsFocus(QWidget &control)
{
    const QImage focused = edgeOf(control);
    control.clearFocus();
    const QImage unfocused = edgeOf(control);
    control.setFocus(Qt::TabFocusReason);
    // A ring goes around; half of one may be out of view.
    return differingPixels(focused, unfocused) >= (control.width() + control.height()) / 2;
}

class Walk
{
public:
    explicit Walk(QWidget &window)
        : m_window(window)
    {
    }

    QStringList faults()
    {
        press(); // a menu that Tab closes is closed by now
        walk();
        checkReach();
        checkOrder();
        return m_faults;
    }

private:
    QWidget *focus() const { return m_window.focusWidget(); }

    void press()
    {
        QWidget *const receiver = focus() ? focus() : &m_window;
        QTest::keyClick(receiver, Qt::Key_Tab);
        QCoreApplication::sendPostedEvents();
    }

    void walk()
    {
        QWidget *const start = focus();
        for (int presses = 0; focus() && presses < mostPresses; ++presses) {
            QWidget &control = *focus();
            m_visited.append(&control);
            // A banner goes of itself, and can be dismissed.
            if (!isCovered(control) && !showsFocus(control))
                m_faults.append(ScreenChecks::nameOf(control) + u" does not show that it has the focus");
            press();
            if (focus() == start || m_visited.contains(focus()))
                break;
        }
        if (focus() != start)
            m_faults.append(u"Tab does not come back to the start: " + names(m_visited));
    }

    void checkReach()
    {
        for (QWidget *control : ScreenChecks::controls(m_window)) {
            const bool isExpected = control->focusPolicy() & Qt::TabFocus && control->isEnabled();
            if (isExpected && !m_visited.contains(control))
                m_faults.append(ScreenChecks::nameOf(*control) + u" is not reached by Tab");
        }
    }

    void checkOrder()
    {
        QHash<const QWidget *, QList<QRect>> onGrounds;
        QList<const QWidget *> outer;
        for (const QWidget *control : std::as_const(m_visited)) {
            const QWidget *ground = groundOf(*control);
            if (ground)
                onGrounds[ground].append(placeOf(*control));
            const QWidget *block = ground ? ground : control;
            if (!isFloating(*block) && (outer.isEmpty() || outer.last() != block))
                outer.append(block);
        }
        if (outer.size() > 1 && outer.first() == outer.last())
            outer.removeLast();
        QList<QRect> places;
        for (const QWidget *block : std::as_const(outer))
            places.append(placeOf(*block));
        const bool isOrdered = TabWalk::isReadingOrder(places) &&
                               std::all_of(onGrounds.cbegin(), onGrounds.cend(), &TabWalk::isReadingOrder);
        if (!isOrdered)
            m_faults.append(u"Tab does not follow what one sees: " + names(m_visited));
    }

    static QString names(const QList<QWidget *> &controls)
    {
        QStringList names;
        for (const QWidget *control : controls)
            names.append(ScreenChecks::nameOf(*control));
        return names.join(QStringLiteral(" > "));
    }

    QWidget &m_window;
    QList<QWidget *> m_visited;
    QStringList m_faults;
};

} // namespace

QStringList TabWalk::faults(QWidget &window)
{
    return Walk(window).faults();
}

bool TabWalk::isReadingOrder(const QList<QRect> &places)
{
    QList<QRect> turned = places;
    for (qsizetype turn = 0; turn < std::max<qsizetype>(1, places.size()); ++turn) {
        if (isRead(turned.constData(), turned.constData() + turned.size()))
            return true;
        std::rotate(turned.begin(), turned.begin() + 1, turned.end());
    }
    return false;
}
