// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DraftStore.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

class AuthService;

/// Ties one editor form to its drafts: keeps what is typed within a quarter of a second, gives it back when
/// the form opens again, and knows whose it is. A text stays its account's: signing out keeps it, and signing
/// in as somebody else takes it off the form. What was typed while signed out goes to whoever signs in next.
/// Main thread only.
class DraftSession final : public QObject
{
    Q_OBJECT

public:
    /// How long a change may wait to be stored.
    static constexpr std::chrono::milliseconds delay{250};

    /// @p current gives what the form holds. All must outlive this object.
    DraftSession(DraftStore &store, const AuthService &auth, DraftStore::Form form,
                 std::function<EditorDraft()> current, QObject *parent = nullptr);
    ~DraftSession() override;

    /// What an opening form should show; nothing when there is no draft. The account of now owns the form
    /// from here on.
    std::optional<EditorDraft> open();

    /// The form has changed. Costs nothing; stores soon.
    void noteChange();

    /// Stores now what waits. Not needed before destruction.
    void flush();

    /// The user has thrown the form's content away: it can be had back until the next one is thrown away.
    void cancel();

    /// The content has been saved.
    void finish();

    bool hasCancelled() const;

    /// What the last cancel threw away, for the form to show. What the form holds now takes its place.
    std::optional<EditorDraft> takeCancelled();

    /// The form holds more than a draft may.
    bool isTooLong() const { return m_isTooLong; }

Q_SIGNALS:
    void tooLongChanged();
    /// Another account is here: the form must forget what it shows and open() anew.
    void accountChanged();

private:
    void onUserChanged();
    void adopt(const QString &userID);
    DraftStore::Key key(DraftStore::Place place) const { return key(place, m_owner); }
    DraftStore::Key key(DraftStore::Place place, const QString &owner) const
    {
        return {m_form, place, owner};
    }
    QString user() const;
    void storeNow();
    void setTooLong(bool isTooLong);

    DraftStore &m_store;
    const AuthService &m_auth;
    DraftStore::Form m_form;
    std::function<EditorDraft()> m_current;
    QString m_owner; ///< user identifier, empty for nobody
    bool m_isTooLong = false;
    QTimer m_timer;
};
