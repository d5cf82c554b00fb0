// Fetching one address, with events running meanwhile.
#pragma once

#include <QByteArray>
#include <QUrl>
#include <functional>

namespace kvn::engine::detail {

// Bytes that a download may have at most.
inline constexpr qint64 maxDownloadBytes = qint64{1} << 30;

// http, https and file. Follows redirections, not from https to http. `progress` gets the bytes
// read and the bytes in all (never called while these are unknown) and returns true to stop.
// Throws RuntimeError: deviceIo with the network's own words, cancelled.
QByteArray download(const QUrl& url, const std::function<bool(qint64, qint64)>& progress);

} // namespace kvn::engine::detail
