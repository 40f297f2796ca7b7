// SPDX-License-Identifier: GPL-3.0-or-later
// Owns the clipboard with several types of content until it is ended.
#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    auto *content = new QMimeData;
    content->setText(QStringLiteral("kept text \u00e9 \U0001F331"));
    content->setHtml(QStringLiteral("<b>kept</b> text"));
    content->setData(QStringLiteral("application/x-kept"), QByteArray::fromHex("00ff10a0"));
    QByteArray png;
    QBuffer buffer(&png);
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    image.save(&buffer, "PNG");
    content->setData(QStringLiteral("image/png"), png);
    QGuiApplication::clipboard()->setMimeData(content);
    std::puts("owning");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
