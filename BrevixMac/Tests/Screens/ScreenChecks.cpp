// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenChecks.h"

#include "HintBubble.h"
#include "OneLine.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QLabel>
#include <QLayoutItem>
#include <QLineEdit>
#include <QScrollBar>
#include <QSet>

#include <algorithm>

namespace {

constexpr int leastTarget = 28;
constexpr int leastShownCharacters = 3; // of a text that is cut short
constexpr int anyHeight = 100'000;
constexpr int lineTolerance = 2; // in which the ways to measure the height of a text differ

QList<QWidget *> shownWidgets(const QWidget &screen)
{
    QList<QWidget *> shown;
    for (QWidget *widget : screen.findChildren<QWidget *>()) {
        if (widget->isVisible() && widget->window() == screen.window())
            shown.append(widget);
    }
    return shown;
}

bool isControl(const QWidget &widget)
{
    // Wheel, keys and the text itself scroll; the bar is there to be seen, and is thin on purpose. And a
    // label whose text can be selected is a text all the same.
    if (qobject_cast<const QScrollBar *>(&widget) || qobject_cast<const QLabel *>(&widget))
        return false;
    return widget.focusPolicy() != Qt::NoFocus || widget.inherits("QAbstractButton") ||
           widget.inherits("QLineEdit") || widget.inherits("QAbstractItemView");
}

bool isRoleOfControl(QAccessible::Role role)
{
    static const QSet<QAccessible::Role> roles{
        QAccessible::PushButton,   QAccessible::CheckBox, QAccessible::RadioButton, QAccessible::ButtonMenu,
        QAccessible::EditableText, QAccessible::List,     QAccessible::Link};
    return roles.contains(role);
}

bool isViewport(const QWidget &widget)
{
    const auto *area = qobject_cast<const QAbstractScrollArea *>(widget.parentWidget());
    return area && area->viewport() == &widget;
}

QString inPixels(const QSize &size)
{
    return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
}

// Texts

/// Somebody who can see it gets to know the whole text.
bool isToldInFull(const QWidget &widget, const QString &text)
{
    return widget.window()->findChild<HintBubble *>() && HintBubble::tipFor(widget) == OneLine::of(text);
}

QString faultOfCutText(const QWidget &widget, const QString &text, int room)
{
    if (!isToldInFull(widget, text))
        return QStringLiteral("is cut off and nowhere told in full");
    const QString beginning = text.first(std::min<qsizetype>(text.size(), leastShownCharacters));
    if (widget.fontMetrics().horizontalAdvance(beginning + QChar(0x2026)) > room)
        return QStringLiteral("shows nearly nothing of its text");
    return {};
}

QString faultOf(const QLabel &label)
{
    const QRect room = label.contentsRect();
    const QFontMetrics metrics = label.fontMetrics();
    if (room.height() < metrics.height())
        return QStringLiteral("is lower than its line");
    const auto *themed = qobject_cast<const TextLabel *>(&label);
    if (themed && label.wordWrap()) // breaks words itself
        return label.heightForWidth(label.width()) > label.height() + lineTolerance
                   ? QStringLiteral("has no room for its last lines")
                   : QString();
    if (label.wordWrap()) {
        const int flags = static_cast<int>(label.alignment()) | Qt::TextWordWrap;
        const QSize needed =
            metrics.boundingRect(QRect(0, 0, room.width(), anyHeight), flags, label.text()).size();
        if (needed.height() > room.height() + lineTolerance)
            return QStringLiteral("has no room for its last lines");
        if (needed.width() > room.width())
            return QStringLiteral("has a word that is wider than it");
        return {};
    }
    return metrics.horizontalAdvance(label.text()) > room.width()
               ? faultOfCutText(label, label.text(), room.width())
               : QString();
}

QString faultOf(const ThemedButton &button)
{
    if (button.height() < button.sizeHint().height())
        return QStringLiteral("is lower than it wants to be");
    if (button.face() == ThemedButton::Face::symbolOnly) {
        // A symbol alone says less than its word.
        const bool isTold =
            !HintBubble::tipFor(button).isEmpty() && button.window()->findChild<HintBubble *>();
        return isTold ? QString() : QStringLiteral("is a symbol without a tip");
    }
    return button.sizeFor(ThemedButton::Face::full).width() > button.width()
               ? QStringLiteral("does not show its whole text")
               : QString();
}

QString faultOf(const QLineEdit &field)
{
    if (!field.text().isEmpty())
        return {};
    const auto *themed = qobject_cast<const TextField *>(&field);
    if (!themed)
        return QStringLiteral("is not drawn with the theme");
    return themed->isPlaceholderCut() && !isToldInFull(field, field.placeholderText())
               ? QStringLiteral("does not show its whole placeholder")
               : QString();
}

QString faultOfText(const QWidget &widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        return faultOf(*label);
    if (const auto *button = qobject_cast<const ThemedButton *>(&widget))
        return faultOf(*button);
    if (const auto *field = qobject_cast<const QLineEdit *>(&widget))
        return faultOf(*field);
    return {};
}

// Room

QString faultOfPlace(const QWidget &widget)
{
    const QWidget &parent = *widget.parentWidget();
    if (isViewport(parent)) {
        const bool isScrolled =
            static_cast<QAbstractScrollArea *>(parent.parentWidget())->horizontalScrollBarPolicy() !=
            Qt::ScrollBarAlwaysOff;
        return !isScrolled && widget.width() > parent.width()
                   ? QStringLiteral("is wider than what scrolls it")
                   : QString();
    }
    // What lies over a list is masked where the list has ended.
    if (!widget.mask().isEmpty())
        return {};
    return parent.rect().contains(widget.geometry()) ? QString()
                                                     : QStringLiteral("sticks out of what holds it");
}

bool isLaidOut(const QWidget &widget)
{
    return widget.testAttribute(Qt::WA_LaidOut) && !widget.size().isEmpty();
}

/// What has a layout of its own presses what is in it.
QString faultOfRoom(QWidget &widget)
{
    if (!isLaidOut(widget) || widget.layout())
        return {};
    QSize least = QWidgetItem(&widget).minimumSize();
    if (widget.hasHeightForWidth() && widget.sizePolicy().verticalPolicy() == QSizePolicy::Fixed)
        least.setHeight(widget.heightForWidth(widget.width()));
    return widget.width() < least.width() || widget.height() < least.height()
               ? QStringLiteral("is pressed together from %1 to %2")
                     .arg(inPixels(least), inPixels(widget.size()))
               : QString();
}

const QWidget *overlapped(const QWidget &widget)
{
    if (!isLaidOut(widget) || isViewport(*widget.parentWidget()))
        return nullptr;
    for (const QWidget *other :
         widget.parentWidget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (other != &widget && other->isVisible() && isLaidOut(*other) &&
            other->geometry().intersects(widget.geometry()))
            return other;
    }
    return nullptr;
}

} // namespace

QList<QWidget *> ScreenChecks::controls(const QWidget &screen)
{
    QList<QWidget *> controls = shownWidgets(screen);
    controls.removeIf([](const QWidget *widget) { return !isControl(*widget); });
    return controls;
}

QString ScreenChecks::nameOf(const QWidget &widget)
{
    QString text = widget.accessibleName();
    if (const auto *label = qobject_cast<const QLabel *>(&widget); label && text.isEmpty())
        text = label->text();
    QString name = QString::fromLatin1(widget.metaObject()->className());
    if (!text.isEmpty())
        name += u" \"" + text.left(60) + u'"';
    else if (widget.parentWidget())
        name += u" in " + nameOf(*widget.parentWidget());
    return name;
}

QStringList ScreenChecks::unnamedControls(const QWidget &screen)
{
    QStringList faults;
    for (QWidget *control : controls(screen)) {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(control);
        if (!accessible || accessible->text(QAccessible::Name).isEmpty())
            faults.append(nameOf(*control) + u" has no accessible name");
        else if (!isRoleOfControl(accessible->role()))
            faults.append(nameOf(*control) + u" has the role " + QString::number(accessible->role()));
        const auto *list = qobject_cast<QAbstractItemView *>(control);
        for (int row = 0; list && row < list->model()->rowCount(); ++row) {
            const QModelIndex index = list->model()->index(row, 0);
            if (index.data(Qt::AccessibleTextRole).toString().isEmpty() && index.data().toString().isEmpty())
                faults.append(nameOf(*control) + u" has a row without a name");
        }
    }
    return faults;
}

QStringList ScreenChecks::smallTargets(const QWidget &screen)
{
    QStringList faults;
    for (const QWidget *control : controls(screen)) {
        if (control->width() < leastTarget || control->height() < leastTarget)
            faults.append(nameOf(*control) + u" is a target of " + inPixels(control->size()));
        const auto *list = qobject_cast<const QAbstractItemView *>(control);
        for (int row = 0; list && row < list->model()->rowCount(); ++row) {
            const QModelIndex index = list->model()->index(row, 0);
            const QRect place = list->visualRect(index);
            if (index.flags().testFlag(Qt::ItemIsSelectable) && place.isValid() &&
                place.height() < leastTarget)
                faults.append(nameOf(*control) + u" has a row that is a target of " + inPixels(place.size()));
        }
    }
    return faults;
}

QStringList ScreenChecks::cutTexts(const QWidget &screen)
{
    QStringList faults;
    for (const QWidget *widget : shownWidgets(screen)) {
        const QString fault = faultOfText(*widget);
        if (!fault.isEmpty())
            faults.append(nameOf(*widget) + u' ' + fault);
    }
    return faults;
}

QStringList ScreenChecks::squeezedWidgets(const QWidget &screen)
{
    QStringList faults;
    for (QWidget *widget : shownWidgets(screen)) {
        for (const QString &fault : {faultOfPlace(*widget), faultOfRoom(*widget)}) {
            if (!fault.isEmpty())
                faults.append(nameOf(*widget) + u' ' + fault);
        }
        if (const QWidget *other = overlapped(*widget))
            faults.append(nameOf(*widget) + u" lies over " + nameOf(*other));
    }
    return faults;
}

QStringList ScreenChecks::all(const QWidget &screen)
{
    return unnamedControls(screen) + smallTargets(screen) + cutTexts(screen) + squeezedWidgets(screen);
}
