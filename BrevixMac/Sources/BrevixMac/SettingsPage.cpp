// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsPage.h"

#include "PageHeader.h"
#include "SettingsView.h"
#include "ThemedButton.h"

#include <QVBoxLayout>

namespace {

constexpr int bottomMargin = 10; // where the panel's corners are round

}

SettingsPage::SettingsPage(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_header(new PageHeader(QStringLiteral("Settings"), this))
    , m_view(new SettingsView(appState, this))
{
    m_header->setSubtitle(QStringLiteral("Return to the prompt picker when you're done."));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, bottomMargin);
    layout->setSpacing(8);
    layout->addWidget(m_header);
    layout->addWidget(m_view, 1);
    connect(m_header, &PageHeader::backRequested, this, &SettingsPage::backRequested);
}

void SettingsPage::focusFirst()
{
    m_header->backButton().setFocus(Qt::OtherFocusReason);
}
