// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

class QProcessEnvironment;

namespace Cloud {

/// The language model that improves prompts, behind an interface of the OpenAI kind. A value.
struct ModelOptions
{
    QUrl baseUrl; ///< ".../v1"; empty: there is none, and rules do the work
    QString model;
    QByteArray key; ///< empty: none is sent

    bool isConfigured() const { return !baseUrl.isEmpty(); }

    /// From BREVIX_MODEL_URL, BREVIX_MODEL, and BREVIX_MODEL_KEY or the file that BREVIX_MODEL_KEY_FILE
    /// names, which nobody but its owner may be able to read. @p problem says why they cannot be used; a key
    /// does not appear in it.
    static ModelOptions fromEnvironment(const QProcessEnvironment &environment, QString &problem);
};

} // namespace Cloud
