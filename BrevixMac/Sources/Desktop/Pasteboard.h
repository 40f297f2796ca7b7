// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QPair>
#include <QString>

#include <optional>

/// One item of the clipboard: the same content in several types, in the owner's order. A type occurs once.
struct PasteboardItem
{
    QList<QPair<QString, QByteArray>> types;

    bool operator==(const PasteboardItem &) const = default;
};

/// The session's clipboard. Main thread only. Nothing throws.
class Pasteboard : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Everything on the clipboard, every type as raw bytes. An empty clipboard is an empty list; a type the
    /// owner refuses is left out. Nothing when the owner fell silent (for about 500 ms), took longer than 2
    /// s, or offers more than can be kept (64 MiB): then it must not be overwritten unasked.
    virtual QCoro::Task<std::optional<QList<PasteboardItem>>> items() = 0;

    /// Replaces the clipboard by @p text as plain text. False when the session refused.
    virtual bool setString(const QString &text) = 0;

    /// The same for text that stays only until restore(): marked so that clipboard histories skip it, offered
    /// where
    /// @p convention pastes from, and watched for being read.
    virtual bool setTransientString(const QString &text, PasteConvention convention) = 0;

    /// Puts @p items back after setTransientString(); an empty list leaves the clipboard empty. Takes effect
    /// only when the transient text has been read and some quiet time has passed, or after a cap of a few
    /// seconds, and never when somebody else has copied meanwhile.
    virtual bool restore(const QList<PasteboardItem> &items) = 0;

    /// Whether a transient text is on the clipboard, or a restore() has still to take effect.
    virtual bool isRestorePending() const = 0;

    virtual void clearContents() = 0;

Q_SIGNALS:
    /// A restore() has taken effect or has become moot.
    void restored();
};
