// The record of engine calls: which operation, on which object, with which arguments, and what
// it did to the undo list. Tests assert on it; a file of JSON Lines can follow it.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace kvn::engine {

// Whom a call is recorded for.
struct TraceIdentity {
    int doc = -1; // the document's slot, -1 for objects of the frame
    QString on;   // "ImgX", "imgxAction", "Dialog", "Image", ...
};

struct TraceRecord {
    int doc = -1;
    QString on;
    QString op;
    QJsonArray args;
    std::optional<QString> step; // label of the undo step that the call recorded
    std::optional<int> errorNumber;
    QString errorText;
    bool finished = false;

    QJsonObject toJson() const;
};

class Trace {
  public:
    Trace();
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    // Appends to the file from now on, a line a call, flushed each. An unwritable file is ignored.
    void setFile(const QString& path);
    // Whether finished records are kept in memory. Off by default: a day's work would pile up.
    void setKept(bool kept) { kept_ = kept; }
    std::vector<TraceRecord> records() const;
    void clear();

    // A call in the making: stands in the order of its begin, is written when it and all before
    // it have ended. Leaving the scope ends it.
    class Call {
      public:
        Call(Trace& trace, const TraceIdentity& who, const QString& op, QJsonArray args);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        void setStep(const QString& label);
        void setError(int number, const QString& text);

      private:
        Trace& trace_;
        std::shared_ptr<TraceRecord> record_;
    };

  private:
    void flush();

    std::deque<std::shared_ptr<TraceRecord>> open_;
    std::vector<std::shared_ptr<TraceRecord>> done_;
    std::unique_ptr<QFile> file_;
    bool kept_ = false;
};

} // namespace kvn::engine
