// The list of pages behind every control and every image made by itself: the live state, its
// undo list, the options of saving, the pen. One list, many handles.
#pragma once

#include <QString>
#include <memory>
#include <set>
#include <string>

#include "engine/color.h"
#include "engine/detail/history.h"
#include "engine/engine.h"
#include "engine/image.h"
#include "imaging/codecs/codec.h"

namespace kvn::engine::detail {

// What a window wants to hear of its list. Everything is called on the user interface thread.
class ListObserver {
  public:
    virtual ~ListObserver() = default;
    // The shown page has other pixels; `changed` is in image pixels, the whole picture mostly.
    virtual void pictureChanged(const imaging::Rect& changed) = 0;
    // One pixel of the shown page was set. Comes in millions: to be gathered.
    virtual void pixelSet(int x, int y) = 0;
    // The shown page is about to be painted in place: a share of its pixels would make that a copy.
    virtual void releasePicture() = 0;
    // Pages came, went, or another one is current.
    virtual void listChanged() = 0;
    // 0, then growing numbers, then 100. True to stop the work.
    virtual bool progress(int percent, const QString& message) = 0;
    virtual bool download(qint64 bytesRead, qint64 bytesTotal) = 0;
};

struct Pen {
    engine::Color color;
    double antialias = 1.0;
    int fillStyle = -1;
    int lineStyle = 0;
    int width = 1;
    int textureMode = 2;
    int mergeType = 1;
    engine::Image texture;
};

class PageList {
  public:
    PageList(Engine& engine, TraceIdentity who);
    PageList(const PageList&) = delete;
    PageList& operator=(const PageList&) = delete;

    Engine& engine() const { return engine_; }

    const PageState* currentPage() const;
    // The index of the page a handle means, -1 if it is gone or there is none.
    int indexOf(quint64 page) const;
    const PageState* find(quint64 page) const;

    // A page differs from the file when its content is none that was loaded or saved.
    bool isChanged(const PageState& page) const { return !savedStamps.contains(page.stamp); }
    bool isModified() const;
    void markSaved();
    void markSaved(const PageState& page) { savedStamps.insert(page.stamp); }

    static quint64 nextId();

    TraceIdentity who;
    ListState state;
    History history;
    imaging::WriteOptions options;
    Pen pen;
    ListObserver* observer = nullptr;
    std::set<quint64> savedStamps;
    bool pagesTouched = false; // pages were added or removed since load or save
    bool reportsProgress = true;
    bool singlePage = false; // a copied picture takes the place of all pages
    QString made; // what made the pictures what they are, as an undo step; empty for a mere copy
    bool busy = false;      // an operation of this list is under way
    quint64 pixelStamp = 0; // of the content that the last single pixel made
    quint64 generation = 0; // grows with every change of the state

  private:
    Engine& engine_;
};

// The page a handle means. Throws RuntimeError(objectNotSet) if there is none.
const PageState& pageOf(const PageRef& ref);
PageList& listOf(const PageRef& ref);

} // namespace kvn::engine::detail
