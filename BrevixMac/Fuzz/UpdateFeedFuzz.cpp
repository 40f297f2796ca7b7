// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "App/Updates/SignedFeed.h"
#include "UpdateFeed.h"

#include <algorithm>

namespace {

void requireSafe(const UpdateFeed &feed)
{
    require(feed.published.isValid(), "a feed has its date");
    const auto newest = feed.newest();
    require(newest.has_value() == !feed.releases.isEmpty(), "of some releases one is the newest");
    for (const UpdateRelease &release : feed.releases) {
        require(release.page.isValid() && release.page.scheme() == u"https" &&
                    !release.page.host().isEmpty() && release.page.userInfo().isEmpty(),
                "a page that is opened in the browser is a plain page of the web");
        require(release.version.segmentCount() >= 2, "a release has a version");
        require(release.version.normalized() <= newest->version.normalized(),
                "no release is newer than the newest");
    }
}

QByteArray signatureOf(const QByteArray &file)
{
    const qsizetype from = file.indexOf(' ') + 1;
    return QByteArray::fromBase64(file.mid(from, file.indexOf('\n') - from));
}

} // namespace

/// Twice: @p bytes as a file, as whoever holds the network could send it, and what is below its first line
/// signed with the key, as an erring maker could.
void readForeignBytes(const QByteArray &bytes)
{
    static const FeedSigner signer;
    const QByteArray signedAnew = signer.sign(bytes.mid(bytes.indexOf('\n') + 1));

    const auto sent = UpdateFeed::read(bytes, signer.publicKey());
    const auto made = UpdateFeed::read(signedAnew, signer.publicKey());
    if (const auto *feed = std::get_if<UpdateFeed>(&made))
        requireSafe(*feed);
    else
        require(!std::get<QString>(made).isEmpty(), "a refusal has words");
    if (std::holds_alternative<QString>(sent))
        return;
    // Ed25519 gives one text one signature.
    require(signatureOf(bytes) == signatureOf(signedAnew), "only what the key has signed is a feed");
    require(std::holds_alternative<UpdateFeed>(made), "a feed is read in the same way twice");
}
