// The probe's commands. Each writes to standard output and throws RuntimeError on failure.
#pragma once

#include <QStringList>

namespace kvn::engine {
class Engine;
}

namespace kvn::probe {

void listOperations();
void info(const QString& file);
void decode(const QString& file, const QString& folder);
void convert(const QString& in, const QString& out, const QStringList& settings);
void run(engine::Engine& engine, const QString& in, const QString& out, const QStringList& words);
void time(const QString& in, const QStringList& words);

} // namespace kvn::probe
