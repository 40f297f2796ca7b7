// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QString>

#include <optional>
#include <variant>

/// Opaque handle to an element of the accessibility tree. A value; comparing handles compares elements.
struct AccessibilityElement
{
    enum class Kind { none, systemWide, application, node };

    Kind kind = Kind::none;
    qint64 processIdentifier = 0; ///< kind application only
    QString owner;                ///< kind node: the mechanism's name of the owning program
    QString path;                 ///< kind node: the mechanism's name of the element within it

    bool operator==(const AccessibilityElement &) const = default;
};

/// A stretch of text, counted in user-perceived characters.
struct TextRange
{
    qint64 location = 0;
    qint64 length = 0;

    bool operator==(const TextRange &) const = default;
};

using AccessibilityValue = std::variant<QString, TextRange, AccessibilityElement>;

/// What came of a write.
enum class WriteOutcome {
    done,    ///< the element has been read back and holds what was written
    refused, ///< it holds something else, its old value as far as possible
    unknown, ///< the write was sent and nothing was heard since: the element may still take it, so nothing
             ///< else may be tried in its place
};

/// Names of the attributes and roles that cross this seam.
namespace AX {
inline const QString focusedUIElement = QStringLiteral("AXFocusedUIElement");
inline const QString role = QStringLiteral("AXRole");
inline const QString subrole = QStringLiteral("AXSubrole");
inline const QString value = QStringLiteral("AXValue");
inline const QString selectedTextRange = QStringLiteral("AXSelectedTextRange");

inline const QString textField = QStringLiteral("AXTextField");
inline const QString textArea = QStringLiteral("AXTextArea");
inline const QString comboBox = QStringLiteral("AXComboBox");
inline const QString application = QStringLiteral("AXApplication");
inline const QString secureTextField = QStringLiteral("AXSecureTextField"); ///< a subrole
inline const QString terminal = QStringLiteral("AXTerminal");               ///< a subrole of AXTextArea
} // namespace AX

/// The accessibility tree of every other application in the session. Main thread only.
///
/// Every operation that asks another process is a task bounded by a deadline of some 250 ms per round trip;
/// every failure, time-out and hung application is "no value", false or refused. Nothing throws.
class AccessibilityTree : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    AccessibilityElement systemWideElement() const;
    AccessibilityElement applicationElement(qint64 processIdentifier) const;

    /// Value of the attribute @p name of @p element. AXFocusedUIElement is an element (asked of the
    /// system-wide or an application element), AXRole and AXSubrole are text, AXValue is text,
    /// AXSelectedTextRange a range.
    virtual QCoro::Task<std::optional<AccessibilityValue>> attribute(AccessibilityElement element,
                                                                     QString name) = 0;

    /// Writes AXValue or AXSelectedTextRange. Writing AXValue changes only what differs from the present
    /// value.
    virtual QCoro::Task<WriteOutcome> setAttribute(AccessibilityElement element, QString name,
                                                   AccessibilityValue value) = 0;

    /// False for read-only elements, for those that are not on screen (any more) and for those known to
    /// accept a write without carrying it out.
    virtual QCoro::Task<bool> isAttributeSettable(AccessibilityElement element, QString name) = 0;

    virtual QCoro::Task<std::optional<qint64>> processIdentifier(AccessibilityElement element) = 0;

    /// Whether what is typed into @p element's application arrives in @p element. False only when that is
    /// sure: another element has the focus there, or @p element is gone. Nothing when the application does
    /// not tell.
    virtual QCoro::Task<std::optional<bool>> isFocused(AccessibilityElement element) = 0;

    /// Whether the session lets this process use the tree at all. Known without a round trip.
    virtual bool isProcessTrusted() const = 0;

    /// Asks the session for that right; trustChanged() tells when it comes.
    virtual void requestTrust() = 0;

Q_SIGNALS:
    void trustChanged();
};

inline AccessibilityElement AccessibilityTree::systemWideElement() const
{
    return {.kind = AccessibilityElement::Kind::systemWide, .owner = {}, .path = {}};
}

inline AccessibilityElement AccessibilityTree::applicationElement(qint64 processIdentifier) const
{
    return {.kind = AccessibilityElement::Kind::application,
            .processIdentifier = processIdentifier,
            .owner = {},
            .path = {}};
}
