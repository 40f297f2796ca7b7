// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class InstanceService;

/// The composition root: makes every long-lived object, joins them, and knows everybody. Main thread only.
class BrevixMacApp
{
public:
    enum class Library { cloud, local };

    using Failed = std::function<void(const QString &problem)>;

    /// @p instance must outlive this object. @p library says where the library lives. A local one is opened
    /// beside the main thread, and the application appears when that is done; @p failed is called if it
    /// cannot be.
    BrevixMacApp(InstanceService &instance, Library library, const Failed &failed);
    ~BrevixMacApp();

    /// Why the application cannot run, as far as that is known; nothing when it does.
    std::optional<QString> problem() const;

    /// Ends the application in good order: see AppDelegate::quit().
    void quit();

    BrevixMacApp(const BrevixMacApp &) = delete;
    BrevixMacApp &operator=(const BrevixMacApp &) = delete;

    /// The application's identifier on the desktop, in reverse-domain form.
    static QString bundleIdentifier();

    /// Where the settings of @p library's mode are kept. The local mode has its own, so that trying it out
    /// never touches the session of the real account.
    static QString defaultsDomain(Library library);

    /// The scheme of the address that a sign-in ends at.
    static QString signInScheme(Library library);

private:
    void run(InstanceService &instance);

    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
