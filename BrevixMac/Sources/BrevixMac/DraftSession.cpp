// SPDX-License-Identifier: GPL-3.0-or-later
#include "DraftSession.h"

#include "AuthService.h"

using Place = DraftStore::Place;

DraftSession::DraftSession(DraftStore &store, const AuthService &auth, DraftStore::Form form,
                           std::function<EditorDraft()> current, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_auth(auth)
    , m_form(form)
    , m_current(std::move(current))
    , m_owner(user())
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(delay);
    connect(&m_timer, &QTimer::timeout, this, &DraftSession::storeNow);
    connect(&auth, &AuthService::currentUserChanged, this, &DraftSession::onUserChanged);
}

DraftSession::~DraftSession()
{
    flush();
}

QString DraftSession::user() const
{
    const auto &user = m_auth.currentUser();
    return user ? user->uid : QString();
}

std::optional<EditorDraft> DraftSession::open()
{
    m_owner = user();
    if (auto draft = m_store.draft(key(Place::current)))
        return draft;
    if (m_owner.isEmpty())
        return std::nullopt;
    auto typedWhileSignedOut = m_store.draft(key(Place::current, {}));
    if (typedWhileSignedOut) {
        m_store.store(key(Place::current), *typedWhileSignedOut);
        m_store.remove(key(Place::current, {}));
    }
    return typedWhileSignedOut;
}

void DraftSession::noteChange()
{
    // Not restarted by further changes: whoever types without a pause is kept up with too.
    if (!m_timer.isActive())
        m_timer.start();
}

void DraftSession::flush()
{
    if (m_timer.isActive())
        storeNow();
}

void DraftSession::storeNow()
{
    m_timer.stop();
    setTooLong(!m_store.store(key(Place::current), m_current()));
}

void DraftSession::setTooLong(bool isTooLong)
{
    if (isTooLong == m_isTooLong)
        return;
    m_isTooLong = isTooLong;
    Q_EMIT tooLongChanged();
}

void DraftSession::cancel()
{
    m_timer.stop();
    const EditorDraft content = m_current();
    if (!content.isBlank())
        m_store.store(key(Place::cancelled), content);
    finish();
}

void DraftSession::finish()
{
    m_timer.stop();
    m_store.remove(key(Place::current));
    setTooLong(false);
}

bool DraftSession::hasCancelled() const
{
    return m_store.draft(key(Place::cancelled)).has_value();
}

std::optional<EditorDraft> DraftSession::takeCancelled()
{
    auto taken = m_store.draft(key(Place::cancelled));
    if (!taken)
        return std::nullopt;
    m_timer.stop();
    m_store.store(key(Place::cancelled), m_current());
    m_store.store(key(Place::current), *taken);
    return taken;
}

void DraftSession::onUserChanged()
{
    const QString newUser = user();
    if (newUser.isEmpty() || newUser == m_owner)
        return;
    flush();
    const bool isNobodys = m_owner.isEmpty() && !m_current().isBlank();
    if (isNobodys) {
        adopt(newUser);
        return;
    }
    m_owner = newUser;
    Q_EMIT accountChanged();
}

void DraftSession::adopt(const QString &userID)
{
    m_store.remove(key(Place::current));
    m_owner = userID;
    // An older draft of the account gives way to what is on the form, and can be had back.
    if (const auto older = m_store.draft(key(Place::current)))
        m_store.store(key(Place::cancelled), *older);
    storeNow();
}
