// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiBus.h"

#include "Foundation/TaskScope.h"

/// Knows which object of which program has the keyboard focus before anybody asks, from the accessibility
/// events. Main thread only.
///
/// A record is not dropped when its object says that it lost the focus: the grab of our own global shortcut
/// makes every target say so. It is replaced by the next focus, and dropped when it turns out to be gone.
class AtSpiFocusTracker final : public QObject
{
    Q_OBJECT

public:
    explicit AtSpiFocusTracker(std::shared_ptr<AtSpiBus> bus);

    /// The focused object of the application in front. One round trip when it is known already.
    static QCoro::Task<std::optional<AtSpiObject>> focusedObject(QPointer<AtSpiFocusTracker> tracker);

    /// The same of the program that runs as @p processIdentifier.
    static QCoro::Task<std::optional<AtSpiObject>> focusedObject(QPointer<AtSpiFocusTracker> tracker,
                                                                 qint64 processIdentifier);

    /// The same of the program with the bus name @p owner.
    static QCoro::Task<std::optional<AtSpiObject>> focusedIn(QPointer<AtSpiFocusTracker> tracker,
                                                             QString owner);

    /// Tells that @p processIdentifier has come to the front; 0 when that is not known. From then on the
    /// window system's word counts, and focus events no longer say who is in front.
    void applicationActivated(qint64 processIdentifier);

private:
    struct Record
    {
        AtSpiObject current;                  ///< what was focused last
        std::optional<AtSpiObject> takesText; ///< what was focused last of those that take text
        quint64 serial = 0;
    };

    void onFocusGained(const AtSpiObject &object);
    void onWindowActivated(const AtSpiObject &window);
    void onCaretMoved(const AtSpiObject &object);
    void onProgramLeft(const QString &owner);
    void forgetEverything();
    void note(const AtSpiObject &object, const AtSpiDescription &description, quint64 serial);

    QCoro::Task<> consider(AtSpiObject object, quint64 serial, std::stop_token token);
    QCoro::Task<> considerCaret(AtSpiObject object, quint64 serial, std::stop_token token);
    QCoro::Task<> lookAhead(QString owner, quint64 serial, std::stop_token token);
    QCoro::Task<> lookAhead(qint64 processIdentifier, quint64 serial, std::stop_token token);

    std::shared_ptr<AtSpiBus> m_bus;
    QHash<QString, Record> m_records; ///< by bus name
    QString m_frontOwner;             ///< by the events
    qint64 m_frontProcess = 0;        ///< by the window system; 0 when it has not told
    quint64 m_serial = 0;
    AtSpiObject m_caretInQuestion;
    TaskScope m_tasks; // keep last
};
