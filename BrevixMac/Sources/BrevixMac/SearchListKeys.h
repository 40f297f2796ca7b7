// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerList.h"

class QKeyEvent;
class TextField;

/// Lets a search field drive the list under it: arrows and pages move the selection, Return inserts,
/// Control-Return copies. The focus stays in the field. Main thread only.
class SearchListKeys final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    SearchListKeys(TextField &field, PickerList &list, QObject *parent);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void insertRequested();
    void copyRequested();

private:
    bool handle(const QKeyEvent &key);

    TextField &m_field;
    PickerList &m_list;
};
