// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Pasteboard.h"
#include "Foundation/TaskScope.h"
#include "X11PasteboardContent.h"
#include "X11PasteboardOwner.h"
#include "X11PasteboardReader.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTimer>

#include <optional>

class X11KeyEvents;

/// The clipboard of an X11 session: an owner and reader of the CLIPBOARD selection of our own. Main thread
/// only.
///
/// A restore waits until the application in front has read the transient text and has been quiet for a
/// moment. That alone decides, not a fixed time, because a busy application may read seconds after the key.
/// At destruction a restore that was asked for takes effect at once, and the content is handed to a clipboard
/// manager where there is one.
class X11Pasteboard final : public Pasteboard
{
    Q_OBJECT

public:
    /// @p keyEvents tells when the paste chord goes out: without a chord there is nothing to wait for, and
    /// readings before it are not the target's. Without it every reading counts. Both must outlive this
    /// object.
    explicit X11Pasteboard(X11Connection &connection, X11KeyEvents *keyEvents = nullptr,
                           QObject *parent = nullptr);
    ~X11Pasteboard() override;

    QCoro::Task<std::optional<QList<PasteboardItem>>> items() override;
    bool setString(const QString &text) override;
    bool setTransientString(const QString &text, PasteConvention convention) override;
    bool restore(const QList<PasteboardItem> &items) override;
    bool isRestorePending() const override { return m_transient.has_value(); }
    void clearContents() override;

private:
    /// The time between setTransientString() and the moment its restore has taken effect.
    struct Transient
    {
        X11PasteboardContent text;
        std::optional<QList<PasteboardItem>> original; ///< nothing when it was never read
        X11PasteboardContent originalContent;          ///< the same with its formats
        std::optional<X11PasteboardContent> originalPrimary;
        bool takesPrimary = false;
        int awaitedRestores = 1; ///< pastes that have begun and have not asked for their restore yet
        bool isRestoreAskedFor = false;
        X11PasteboardContent restoredContent;
        bool isChordPosted = false;
        QElapsedTimer sinceChord;
        std::optional<std::chrono::milliseconds> latency; ///< from the chord to the target's first reading
        std::optional<QDeadlineTimer> quietEnd;           ///< set as soon as the text has been read
    };

    std::optional<QList<PasteboardItem>> knownItems() const;
    QList<PasteboardItem> itemsOfSnapshot(const X11PasteboardReader::Snapshot &snapshot) const;
    void rememberOriginal(Transient &transient) const;
    void preparePrimary();
    void onPrimaryRead(const X11PasteboardReader::Result &result);
    void takePrimary();
    void onDataRead(quint32 requestor, quint32 target);
    void onAboutToPostChord();
    void onClipboardLost();
    void considerRestoring();
    void finishRestoring();
    void restorePrimary();
    void abandonTransient();
    bool isFocusedClient(quint32 window) const;
    void handOver();

    X11Connection &m_connection;
    X11KeyEvents *m_keyEvents;
    X11PasteboardOwner m_clipboard;
    X11PasteboardOwner m_primary;
    X11PasteboardReader m_clipboardReader;
    X11PasteboardReader m_primaryReader;
    std::optional<X11PasteboardReader::Snapshot> m_lastSnapshot;
    std::optional<Transient> m_transient;
    QTimer m_quietTimer;
    QTimer m_capTimer;
    QTimer m_snapshotExpiry;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
