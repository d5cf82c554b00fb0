#include "engine/detail/download.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <memory>

#include "basic/error.h"

namespace kvn::engine::detail {
namespace {

constexpr int silenceTimeoutMs = 30000;
const char source[] = "Import.FromURL";

bool isKnownScheme(const QUrl& url) {
    const QString scheme = url.scheme().toLower();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https") ||
           scheme == QLatin1String("file");
}

void checkReply(const QNetworkReply& reply, bool stopped, bool tooLarge) {
    if (stopped) throw RuntimeError(errors::cancelled, "The operation was cancelled.", source);
    if (tooLarge) throw RuntimeError(errors::outOfMemory, "The download is too large.", source);
    if (reply.error() != QNetworkReply::NoError)
        throw RuntimeError(errors::deviceIo, reply.errorString().toStdString(), source);
}

} // namespace

QByteArray download(const QUrl& url, const std::function<bool(qint64, qint64)>& progress) {
    if (!url.isValid() || !isKnownScheme(url))
        throw RuntimeError(errors::invalidCall, "The address is not valid.", source);
    QNetworkAccessManager network;
    QNetworkRequest request(url);
    request.setTransferTimeout(silenceTimeoutMs);
    request.setMaximumRedirectsAllowed(10);
    const std::unique_ptr<QNetworkReply> reply(network.get(request));
    bool stopped = false, tooLarge = false;
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(reply.get(), &QNetworkReply::downloadProgress, &loop,
                     [&](qint64 read, qint64 total) {
                         tooLarge = tooLarge || read > maxDownloadBytes || total > maxDownloadBytes;
                         if (total > 0 && !stopped) stopped = progress(read, total);
                         if (stopped || tooLarge) reply->abort();
                     });
    if (!reply->isFinished()) loop.exec();
    checkReply(*reply, stopped, tooLarge);
    return reply->readAll();
}

} // namespace kvn::engine::detail
