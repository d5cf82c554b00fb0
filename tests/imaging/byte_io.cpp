// Reading whole files and replacing them as a whole.
#include <QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "basic/error.h"
#include "imaging/byte_io.h"

using namespace kvn;
using namespace kvn::imaging;

namespace {

std::string contents(const std::string& path) {
    const FileBytes file(path);
    return {file.bytes().begin(), file.bytes().end()};
}

void put(ByteSink& sink, const std::string& text) {
    sink.write(text.data(), text.size());
}

template <typename Work>
int numberOf(const Work& work) {
    try {
        work();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// Limits the size of written files, as a full disk would, for one scope.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit small{bytes, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, SIG_DFL);
    }

  private:
    rlimit old_{};
};

} // namespace

class ByteIoTest : public QObject {
    Q_OBJECT

  private slots:
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }

    void readsWhatStandsThere() {
        put("a", "hello");
        QCOMPARE(contents(path("a")), std::string("hello"));
        put("empty", "");
        QCOMPARE(contents(path("empty")), std::string());
    }

    void refusesWhatIsNoFile() {
        QCOMPARE(numberOf([&] { FileBytes file(path("none")); }), errors::fileNotFound);
        QCOMPARE(numberOf([&] { FileBytes file(path("none/none")); }), errors::fileNotFound);
        QCOMPARE(numberOf([&] { FileBytes file(path(".")); }), errors::pathAccess);
        QCOMPARE(::mkfifo(path("pipe").c_str(), 0600), 0);
        QCOMPARE(numberOf([&] { FileBytes file(path("pipe")); }), errors::pathAccess);
    }

    void replacesAndKeepsPermissions() {
        put("a", "old");
        ::chmod(path("a").c_str(), 0640);
        // Not every file system has room for notes.
        const bool noted = ::setxattr(path("a").c_str(), "user.note", "kept", 4, 0) == 0;
        replaceFile(path("a"), [](ByteSink& sink) { ::put(sink, "new"); });
        QCOMPARE(contents(path("a")), std::string("new"));
        struct stat info {};
        ::stat(path("a").c_str(), &info);
        QCOMPARE(info.st_mode & 07777, mode_t{0640});
        char note[4] = {};
        if (noted) QCOMPARE(::getxattr(path("a").c_str(), "user.note", note, 4), ssize_t{4});
        QCOMPARE(entries(), 1);
    }

    void followsLinksAlsoToNothing() {
        put("target", "old");
        QCOMPARE(::symlink("target", path("link").c_str()), 0);
        QCOMPARE(::symlink("link", path("link2").c_str()), 0);
        replaceFile(path("link2"), [](ByteSink& sink) { ::put(sink, "new"); });
        QCOMPARE(contents(path("target")), std::string("new"));
        QVERIFY(QFileInfo(QString::fromStdString(path("link2"))).isSymLink());

        QCOMPARE(::symlink("later", path("dangling").c_str()), 0);
        replaceFile(path("dangling"), [](ByteSink& sink) { ::put(sink, "made"); });
        QCOMPARE(contents(path("later")), std::string("made"));

        QCOMPARE(::symlink("ring2", path("ring1").c_str()), 0);
        QCOMPARE(::symlink("ring1", path("ring2").c_str()), 0);
        QCOMPARE(numberOf([&] { replaceFile(path("ring1"), [](ByteSink&) {}); }),
                 errors::pathAccess);
    }

    void leavesTheOldFileWholeWhenWritingFails() {
        put("a", "old");
        QVERIFY_EXCEPTION_THROWN(replaceFile(path("a"),
                                             [](ByteSink& sink) {
                                                 ::put(sink, std::string(1 << 20, 'x'));
                                                 throw std::runtime_error("stopped");
                                             }),
                                 std::runtime_error);
        QCOMPARE(contents(path("a")), std::string("old"));
        QCOMPARE(entries(), 1);
    }

    void saysThatTheDiskIsFull() {
        put("a", "old");
        const FullDisk full(1000);
        // Once while it is filled, once only when the buffer goes out at the end.
        for (const std::size_t size : {std::size_t{1} << 20, std::size_t{5000}})
            QCOMPARE(numberOf([&] {
                         replaceFile(path("a"),
                                     [&](ByteSink& sink) { ::put(sink, std::string(size, 'x')); });
                     }),
                     errors::diskFull);
        QCOMPARE(contents(path("a")), std::string("old"));
        QCOMPARE(entries(), 1);
    }

    void refusesPlacesThatCannotBeWritten() {
        const auto nothing = [](ByteSink&) {};
        QCOMPARE(numberOf([&] { replaceFile(path("no/file"), nothing); }), errors::pathAccess);
        QCOMPARE(numberOf([&] { replaceFile(path("."), nothing); }), errors::pathAccess);
        QCOMPARE(numberOf([&] { replaceFile("/dev/null", nothing); }), errors::pathAccess);
        QCOMPARE(numberOf([&] { replaceFile("", nothing); }), errors::pathAccess);
        if (::geteuid() == 0) QSKIP("the superuser may write everywhere");
        put("a", "old");
        ::chmod(path("a").c_str(), 0444);
        QCOMPARE(numberOf([&] { replaceFile(path("a"), nothing); }), errors::permissionDenied);
        ::chmod(path("a").c_str(), 0644);
        ::chmod(folder_->path().toUtf8().constData(), 0555);
        QCOMPARE(numberOf([&] { replaceFile(path("a"), nothing); }), errors::permissionDenied);
        ::chmod(folder_->path().toUtf8().constData(), 0755);
        QCOMPARE(contents(path("a")), std::string("old"));
    }

    // Seeking, overwriting and reading back give the same in memory and on disk, whatever lies in
    // the buffer at the time.
    void sinksAgree() {
        const auto play = [](ByteSink& sink) {
            std::string seen;
            const auto look = [&](std::uint64_t at, std::size_t size) {
                std::string part(size, '?');
                part.resize(sink.readAt(at, part.data(), size));
                seen += part + "|";
            };
            ::put(sink, "0123456789");
            sink.seek(4);
            ::put(sink, "ab");
            look(0, 20);
            look(10, 5);
            ::put(sink, std::string(300'000, 'L'));
            sink.seek(299'999);
            ::put(sink, std::string(10, 'e'));
            look(299'997, 100);
            return seen + std::to_string(sink.size()) + "@" + std::to_string(sink.position());
        };
        MemorySink memory;
        const std::string inMemory = play(memory);
        QVERIFY(inMemory.starts_with("0123ab6789||LLeeeeeeeeee|"));
        std::string onDisk;
        replaceFile(path("a"), [&](ByteSink& sink) { onDisk = play(sink); });
        QCOMPARE(onDisk, inMemory);
        QCOMPARE(contents(path("a")), std::string(memory.bytes().begin(), memory.bytes().end()));
    }

  private:
    std::string path(const char* name) const {
        return (folder_->path() + "/" + name).toStdString();
    }
    void put(const char* name, const std::string& text) const {
        QFile file(QString::fromStdString(path(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.data(), static_cast<qint64>(text.size()));
    }
    int entries() const {
        return static_cast<int>(
            QDir(folder_->path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                .size());
    }

    std::unique_ptr<QTemporaryDir> folder_;
};

QTEST_GUILESS_MAIN(ByteIoTest)
#include "byte_io.moc"
