// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QWidget>

/// The brand mark of a header: the product's initial in white on the brand's own violet, the same in both
/// schemes.
class BrandGlyph final : public QWidget
{
    Q_OBJECT

public:
    explicit BrandGlyph(QWidget *parent = nullptr);

    QSize sizeHint() const override;

    /// The mark as an icon, for trays.
    static QIcon icon();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_initial;
};
