// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "X11Connection.h"
#include "X11PasteboardContent.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QTimer>

#include <chrono>
#include <optional>

/// Reads everything that another client offers in a selection, one target after the other, without ever
/// waiting. Follows the selection's owner all the time. Main thread only.
///
/// Text is read first and images last, so that a slow picture does not cost the text. When all the renderings
/// of one picture would not fit the limits, one lossless rendering is kept and the others are left out.
class X11PasteboardReader final : public QObject
{
    Q_OBJECT

public:
    struct Limits
    {
        std::chrono::milliseconds time{500};   ///< of silence
        std::chrono::milliseconds total{4000}; ///< for an owner that answers slowly but steadily
        qint64 bytes = qint64(64) * 1024 * 1024;
    };

    /// What was read, or nothing when the limits were not kept. No content means that nobody owns the
    /// selection.
    struct Snapshot
    {
        std::optional<X11PasteboardContent> content;
        quint32 ownerGeneration = 0;
    };
    using Result = std::optional<Snapshot>;

    X11PasteboardReader(X11Connection &connection, const QByteArray &selection, QObject *parent = nullptr);
    /// Ends a reading with no result.
    ~X11PasteboardReader() override;

    /// Starts a reading, or joins the one that runs. The future always finishes, soon after the time limit at
    /// the latest.
    QFuture<Result> read(Limits limits);
    void cancel();
    bool isReading() const { return m_promise.has_value(); }

    /// Grows whenever the selection changes hands.
    quint32 ownerGeneration() const { return m_ownerGeneration; }

private:
    enum class Step { idle, targets, data, increments };

    void start();
    void onEvent(const xcb_generic_event_t &event);
    void onOwnerChanged();
    void onSelectionNotify(const xcb_selection_notify_event_t &event);
    void onPropertyChanged(const xcb_property_notify_event_t &event);
    void onTargets(bool isAnswered);
    void onData(bool isAnswered);
    void onIncrement();
    void request(xcb_atom_t target);
    void requestNext();
    void keep(X11PasteboardEntry entry);
    bool skipsFurtherImages(xcb_atom_t next) const;
    qint64 remainingBytes() const;
    void finish(Result result);
    void finishWithContent();
    void onTimeLimit();
    void restartDeadline();

    X11Connection &m_connection;
    xcb_atom_t m_selection;
    xcb_window_t m_window;
    quint8 m_fixesEvent = 0;
    quint32 m_ownerGeneration = 0;

    std::optional<QPromise<Result>> m_promise;
    Limits m_limits;
    Step m_step = Step::idle;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    xcb_atom_t m_property = XCB_ATOM_NONE;
    quint32 m_requests = 0;
    QList<xcb_atom_t> m_offered; ///< in the owner's order
    QList<xcb_atom_t> m_waiting; ///< in the order of reading
    X11PasteboardEntry m_current;
    X11PasteboardContent m_content;
    QElapsedTimer m_clock;
    QElapsedTimer m_requestClock;
    qint64 m_slowestImage = 0; ///< ms
    qint64 m_largestImage = 0;
    QTimer m_deadline;
    std::unique_ptr<X11Connection::Subscription> m_subscription;
};
