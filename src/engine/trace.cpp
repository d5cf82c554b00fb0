#include "engine/trace.h"

#include <QFile>
#include <QJsonDocument>
#include <utility>

namespace kvn::engine {

namespace {

// The text of one value. It goes through an array because a JSON document holds no bare text.
QByteArray jsonText(const QJsonValue& value) {
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).chopped(1).mid(1);
}

QJsonValue slotValue(int doc) {
    return doc < 0 ? QJsonValue(QJsonValue::Null) : QJsonValue(doc);
}

// One line of the file. JSON objects of the library sort their keys; the file keeps the order in
// which a call is read.
QByteArray line(const TraceRecord& record) {
    QByteArray text = "{\"doc\":" + jsonText(slotValue(record.doc)) +
                      ",\"on\":" + jsonText(record.on) + ",\"op\":" + jsonText(record.op) +
                      ",\"args\":" + QJsonDocument(record.args).toJson(QJsonDocument::Compact);
    if (record.step) text += ",\"step\":" + jsonText(*record.step);
    if (record.errorNumber)
        text += ",\"error\":{\"number\":" + jsonText(*record.errorNumber) +
                ",\"text\":" + jsonText(record.errorText) + "}";
    return text + "}\n";
}

} // namespace

QJsonObject TraceRecord::toJson() const {
    QJsonObject object{{"doc", slotValue(doc)}, {"on", on}, {"op", op}, {"args", args}};
    if (step) object["step"] = *step;
    if (errorNumber) object["error"] = QJsonObject{{"number", *errorNumber}, {"text", errorText}};
    return object;
}

Trace::Trace() = default;
Trace::~Trace() = default;

void Trace::setFile(const QString& path) {
    file_.reset();
    if (path.isEmpty()) return;
    auto file = std::make_unique<QFile>(path);
    if (file->open(QIODevice::WriteOnly | QIODevice::Append)) file_ = std::move(file);
}

std::vector<TraceRecord> Trace::records() const {
    std::vector<TraceRecord> all;
    all.reserve(done_.size());
    for (const auto& record : done_)
        all.push_back(*record);
    return all;
}

void Trace::clear() {
    done_.clear();
}

void Trace::flush() {
    for (; !open_.empty() && open_.front()->finished; open_.pop_front()) {
        if (file_) {
            file_->write(line(*open_.front()));
            file_->flush();
        }
        if (kept_) done_.push_back(std::move(open_.front()));
    }
}

Trace::Call::Call(Trace& trace, const TraceIdentity& who, const QString& op, QJsonArray args)
    : trace_(trace), record_(std::make_shared<TraceRecord>()) {
    record_->doc = who.doc;
    record_->on = who.on;
    record_->op = op;
    record_->args = std::move(args);
    trace_.open_.push_back(record_);
}

Trace::Call::~Call() {
    record_->finished = true;
    trace_.flush();
}

void Trace::Call::setStep(const QString& label) {
    record_->step = label;
}

void Trace::Call::setError(int number, const QString& text) {
    record_->errorNumber = number;
    record_->errorText = text;
}

} // namespace kvn::engine
