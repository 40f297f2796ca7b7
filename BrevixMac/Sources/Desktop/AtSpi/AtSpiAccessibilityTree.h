// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiFocusTracker.h"
#include "AtSpiSession.h"
#include "AtSpiTextField.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/SessionProbe.h"
#include "Foundation/TaskScope.h"

/// The accessibility tree by AT-SPI, over D-Bus and without a library in between, so that no question can
/// block. Main thread only. Finds the accessibility bus by itself and finds it again when it is restarted;
/// without one the process is not trusted and every operation gives nothing.
class AtSpiAccessibilityTree final : public AccessibilityTree
{
    Q_OBJECT

public:
    /// @p session is the bus on which the session's accessibility service lives.
    explicit AtSpiAccessibilityTree(QDBusConnection session = QDBusConnection::sessionBus());
    ~AtSpiAccessibilityTree() override;

    QCoro::Task<std::optional<AccessibilityValue>> attribute(AccessibilityElement element,
                                                             QString name) override;
    QCoro::Task<WriteOutcome> setAttribute(AccessibilityElement element, QString name,
                                           AccessibilityValue value) override;
    QCoro::Task<bool> isAttributeSettable(AccessibilityElement element, QString name) override;
    QCoro::Task<std::optional<qint64>> processIdentifier(AccessibilityElement element) override;
    QCoro::Task<std::optional<bool>> isFocused(AccessibilityElement element) override;
    bool isProcessTrusted() const override;
    void requestTrust() override;

    /// How the session's accessibility was found, asked afresh.
    struct Examination
    {
        SessionFacts::Accessibility state = SessionFacts::Accessibility::noService;
        QList<qint64> processes; ///< of the programs on the accessibility bus
    };

    /// Asks the service, the bus and its registry. May start the service, as this object does anyway.
    QCoro::Task<Examination> examine();

    /// Tells which process has come to the front, 0 when that is not known. Programs on GTK 4 do not say so
    /// themselves, and programs without accessibility would leave the one before them in front.
    void applicationActivated(qint64 processIdentifier);

private:
    /// A field as it is now. The text is there only if the field may be read.
    struct Look
    {
        AtSpiDescription description;
        std::optional<AtSpiText> text;
    };

    /// What was last handed out about a field, or written to it. A write is refused when the field has
    /// changed since, or when the reader could not be told where the caret is and so would replace
    /// everything.
    struct LastRead
    {
        AtSpiObject object;
        AtSpiToolkit toolkit = AtSpiToolkit::unknown;
        int characterCount = -1;
        std::optional<QString> value;
        bool isCaretKnown = true;
    };

    QCoro::Task<> stayConnected(std::stop_token token);
    void connectNow();
    void updateTrust();

    QCoro::Task<std::optional<AccessibilityElement>> focusedElement(AccessibilityElement element);
    static QCoro::Task<std::optional<Look>> look(std::shared_ptr<AtSpiBus> bus, AtSpiObject object,
                                                 LastRead known);
    QCoro::Task<std::optional<AtSpiText>> readText(AtSpiObject object, std::stop_token token);
    QCoro::Task<WriteOutcome> writeValue(AtSpiObject object, QString value, std::stop_token token);
    QCoro::Task<bool> writeRange(AtSpiObject object, TextRange range, std::stop_token token);

    QDBusConnection m_sessionBus;
    AtSpiSession m_session;
    std::shared_ptr<AtSpiBus> m_bus;
    AtSpiFocusTracker m_focus;
    LastRead m_lastRead;
    bool m_isTrusted = false;
    bool m_isConnecting = false;
    TaskScope m_tasks; // keep last
};
