#include "document/document_actions.h"

#include <QFileInfo>
#include <algorithm>
#include <functional>
#include <vector>

#include "dialogs/asking.h"
#include "document/document_menus.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/roles.h"

namespace kvn::document {
namespace {

constexpr int listedFiles = 12; // more names than this make no readable box

// While a document is on its way into a slot, the slot belongs to it.
class Opening {
  public:
    explicit Opening(ProgramState& state) : state_(state), first_(!state.opening) {
        state_.opening = true;
    }
    ~Opening() {
        if (first_) state_.opening = false;
    }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;
    bool isFirst() const { return first_; }

  private:
    ProgramState& state_;
    bool first_;
};

void dropFromSlot(const Services& services, frmMain* document) {
    services.state.DocumentsOpen[static_cast<std::size_t>(document->DocIndex)] = false;
    document->closeWithoutAsking();
    services.host.close(document);
}

// The hidden window in the next slot, made if there is none.
frmMain* takeSlot(const Services& services) {
    ProgramState& state = services.state;
    if (state.NextDocIndex < 0) // counted past its last number
        throw RuntimeError(errors::overflow, "Overflow", "Kestrelvane");
    const auto slot = static_cast<std::size_t>(state.NextDocIndex);
    if (state.Documents.size() <= slot) {
        state.Documents.resize(slot + 1);
        state.DocumentsOpen.resize(slot + 1, false);
    }
    if (state.Documents[slot]) return state.Documents[slot];
    auto* document = new frmMain(services, nullptr);
    state.Documents[slot] = document;
    document->setDocIndex(state.NextDocIndex);
    services.host.adopt(document);
    try {
        document->load();
    } catch (...) {
        dropFromSlot(services, document);
        throw;
    }
    return document;
}

void showInSlot(const Services& services, frmMain* document) {
    services.host.present(document);
    services.state.NextDocIndex = static_cast<qint16>(services.state.NextDocIndex + 1);
    services.rules.EnDisMenuItems(true);
    documentActivated(*document);
}

// `fill` puts a picture into the window and returns whether there is one to show.
bool openInSlot(const Services& services, const std::function<bool(frmMain&)>& fill) {
    const Opening opening(services.state);
    if (!opening.isFirst()) {
        sayAtWork(services);
        return false;
    }
    QPointer<frmMain> document;
    bool filled = false;
    const bool done = guarded(services.asking, services.host.window(), [&] {
        document = takeSlot(services);
        services.state.DocumentsOpen[static_cast<std::size_t>(document->DocIndex)] = true;
        document->Saved = true;
        filled = fill(*document);
    });
    if (!document) return false;
    if (done && filled)
        showInSlot(services, document);
    else
        dropFromSlot(services, document);
    return done && filled;
}

void reportUnread(const Services& services, const QStringList& paths) {
    QStringList names = paths.mid(0, listedFiles);
    if (paths.size() > listedFiles)
        names += QStringLiteral("... and %1 more").arg(paths.size() - listedFiles);
    services.asking.message(
        {.text =
             QStringLiteral("These files are corrupt or not supported:\n\n") + names.join(u'\n'),
         .title = QStringLiteral("Invalid Image"),
         .icon = dialogs::Icon::None,
         .buttons = dialogs::Buttons::Ok,
         .owner = services.host.window()});
}

std::vector<frmMain*> openDocuments(const ProgramState& state) {
    std::vector<frmMain*> open;
    for (std::size_t i = 0; i < state.Documents.size(); ++i)
        if (state.DocumentsOpen[i] && state.Documents[i]) open.push_back(state.Documents[i]);
    return open;
}

} // namespace

bool newDocument(const Services& services) {
    return openInSlot(services, [](frmMain& document) { return document.NewImage(); });
}

bool openDocument(const Services& services) {
    return openInSlot(services, [](frmMain& document) { return document.LoadImage(); });
}

void openUrl(const Services& services) {
    const QString bare = QStringLiteral("http://");
    const QString url = services.asking.inputBox(QStringLiteral("Enter URL to open:"), {}, bare,
                                                 services.host.window());
    if (url.isEmpty() || url == bare) return;
    const Opening opening(services.state);
    if (!opening.isFirst()) {
        sayAtWork(services);
        return;
    }
    guarded(services.asking, services.host.window(), [&] {
        frmMain* document = takeSlot(services);
        document->hide();
        document->LoadURL(url);
    });
}

int openFiles(const Services& services, const QStringList& paths) {
    int opened = 0;
    QStringList unread;
    for (const QString& path : paths) {
        if (services.state.opening) {
            sayAtWork(services);
            break;
        }
        const auto fill = [&](frmMain& document) { return document.LoadFile(path); };
        if (openInSlot(services, fill))
            ++opened;
        else
            unread += path;
    }
    if (!unread.isEmpty()) reportUnread(services, unread);
    return opened;
}

bool closeAll(const Services& services) {
    const std::vector<frmMain*> open = openDocuments(services.state);
    const auto isBusy = [](const frmMain* document) { return document->isBusy(); };
    if (services.state.opening || std::any_of(open.begin(), open.end(), isBusy)) {
        sayAtWork(services);
        return false;
    }
    const auto staysOpen = [&](frmMain* document) {
        if (!document->Saved) services.host.activate(document);
        return document->askBeforeClose();
    };
    if (std::any_of(open.begin(), open.end(), staysOpen)) return false;
    for (frmMain* document : open) {
        document->closeWithoutAsking();
        services.host.close(document);
    }
    return true;
}

void documentActivated(frmMain& document) {
    const Services& services = document.services();
    guarded(document, [&] {
        services.rules.ImageMenusEnabled(!document.ImgX->IsEmpty());
        RebuildImageList(document);
        showMetadataItems(document);
    });
}

} // namespace kvn::document
