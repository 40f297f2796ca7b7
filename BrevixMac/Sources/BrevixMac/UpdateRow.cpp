// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateRow.h"

#include "SettingsRow.h"
#include "ThemedButton.h"
#include "UpdateService.h"

#include "Desktop/WebBrowser.h"

#include <QVBoxLayout>

#include <utility>

namespace {

Theme::Color ink(UpdateStatus::Kind kind)
{
    switch (kind) {
    case UpdateStatus::Kind::available:
    case UpdateStatus::Kind::upToDate:
        return Theme::Color::success;
    case UpdateStatus::Kind::failed:
        return Theme::Color::danger;
    default:
        return Theme::Color::secondary;
    }
}

} // namespace

UpdateRow::UpdateRow(UpdateService &updates, WebBrowser &browser, QWidget *parent)
    : QWidget(parent)
    , m_updates(updates)
    , m_browser(browser)
    , m_row(new SettingsRow(QStringLiteral("Automatic updates"),
                            QStringLiteral("Brevix checks for updates in the background.")))
    , m_check(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Check Now")))
    , m_release(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Open Release Page")))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_row);
    for (ThemedButton *button : {m_release, m_check}) {
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        m_row->addControl(button);
    }
    connect(m_check, &QPushButton::clicked, &m_updates, &UpdateService::checkForUpdates);
    connect(m_release, &QPushButton::clicked, this, &UpdateRow::openRelease);
    connect(&m_updates, &UpdateService::statusChanged, this, &UpdateRow::refresh);
    connect(&m_browser, &WebBrowser::failed, this, &UpdateRow::onBrowserFailed);
    refresh();
}

void UpdateRow::refresh()
{
    const UpdateStatus &status = m_updates.status();
    m_row->setNote(status.description(), ink(status.kind));
    m_release->setVisible(status.release.has_value());
    const bool isChecking = status.kind == UpdateStatus::Kind::checking;
    m_check->setBusy(isChecking);
    m_check->setEnabled(m_updates.isConfigured() && !isChecking);
}

void UpdateRow::openRelease()
{
    const auto &release = m_updates.status().release;
    if (!release)
        return;
    refresh(); // without what an earlier attempt has left
    m_isOpening = true;
    m_browser.open(release->page);
}

void UpdateRow::onBrowserFailed()
{
    const auto &release = m_updates.status().release;
    if (!std::exchange(m_isOpening, false) || !release)
        return;
    m_row->setNote(u"No browser could be opened. The release page is "_qs + release->page.toString(),
                   Theme::Color::warning);
}
