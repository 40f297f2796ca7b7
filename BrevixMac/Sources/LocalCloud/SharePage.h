// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QString>

namespace Cloud {

class Documents;

/// Answers public share links with a page that shows what was shared. Needs no sign-in: whoever has the link
/// may read. Throws StorageError.
class SharePage
{
public:
    SharePage(const Documents &documents, QString libraryAppID);

    /// GET /public?promptId=… (prompts and skills) or ?categoryId=…
    Response handle(const Request &request) const;

private:
    const Documents &m_documents;
    QString m_libraryAppID;
};

} // namespace Cloud
