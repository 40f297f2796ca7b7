// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DoctorReport.h"

#include <QMap>
#include <QObject>

class Doctor;
class SettingsCard;
class SettingsRow;
class StatusChip;
class ThemedButton;

/// The rows of a settings card that say what works in this session, and the button that looks again.
class DoctorRows final : public QObject
{
    Q_OBJECT

public:
    /// Adds its rows to @p card. All must outlive this object.
    DoctorRows(Doctor &doctor, SettingsCard &card, QObject *parent);

    SettingsRow &headRow() const { return *m_head; }
    ThemedButton &examineButton() const { return *m_examine; }
    /// By the identifiers of the report.
    SettingsRow &row(const QString &id) const { return *m_rows.value(id).row; }
    StatusChip &chip(const QString &id) const { return *m_rows.value(id).chip; }

private:
    struct Row
    {
        SettingsRow *row = nullptr;
        StatusChip *chip = nullptr;
    };

    void refresh();
    static void show(const Row &shown, const DoctorRow &row);

    Doctor &m_doctor;
    SettingsRow *m_head;
    ThemedButton *m_examine;
    QMap<QString, Row> m_rows;
};
