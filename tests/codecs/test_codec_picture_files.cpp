// Files and pipes as streams of bytes: windows that slide, files that take their place only when they are whole.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/codecs/support/pictures.h"

#include <cstring>
#include <fstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace codecs;

namespace {

Bytes randomBytes(std::size_t n) {
    Bytes bytes(n);
    Rng(9).bytes(bytes.data(), n);
    return bytes;
}

std::size_t filesIn(const Folder& folder) {
    return std::size_t(std::distance(std::filesystem::directory_iterator(folder.path), {}));
}

// What comes out of a source in views of at least `wanted`, and skips of all that they show or of `step`.
Bytes drained(ByteSource& source, std::size_t wanted, std::size_t step) {
    Bytes all;
    for (ByteView there; !(there = source.view(wanted)).empty();) {
        const std::size_t n = std::min(there.size(), step);
        EXPECT_EQ(source.position(), all.size());
        all.insert(all.end(), there.begin(), there.begin() + std::ptrdiff_t(n));
        source.skip(n);
    }
    return all;
}

// A named pipe with a writer behind it.
struct Pipe {
    std::string path;
    std::thread writer;
    Pipe(const Folder& folder, Bytes bytes) : path(folder.file("pipe")) {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        writer = std::thread([this, bytes = std::move(bytes)] {
            std::ofstream(path, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        });
    }
    ~Pipe() {
        writer.join();
        std::filesystem::remove(path);
    }
};

} // namespace

TEST(Bytes, OfAnyCount) {
    const Folder folder;
    for (std::size_t n : {0u, 1u, 65535u, 65536u, 65537u, 262143u, 262144u, 262145u, 600000u}) {
        const Bytes bytes = randomBytes(n);
        writeFile(folder.file("b"), bytes);
        EXPECT_EQ(readFile(folder.file("b")), bytes);
        for (auto [wanted, step] :
             {std::pair<std::size_t, std::size_t>{1, 100000}, {7, 3}, {300000, 300000}, {1000, 1}}) {
            if (step < 10 && n > 70000) continue;
            const auto file = openBytes(folder.file("b"));
            EXPECT_EQ(drained(*file, wanted, step), bytes);
            const Pipe pipe(folder, bytes);
            EXPECT_EQ(drained(*openBytes(pipe.path), wanted, step), bytes);
        }
    }
}

TEST(Bytes, ViewsShowWhatWasAskedFor) {
    const Folder folder;
    const Bytes bytes = randomBytes(1000000);
    writeFile(folder.file("b"), bytes);
    const Pipe pipe(folder, bytes);
    for (const std::string& path : {folder.file("b"), pipe.path}) {
        const auto source = openBytes(path);
        EXPECT_GE(source->view(400000).size(), 400000u);
        source->skip(700000);
        EXPECT_EQ(source->position(), 700000u);
        const ByteView there = source->view(500000);
        ASSERT_EQ(there.size(), 300000u) << "the end is nearer";
        EXPECT_TRUE(std::equal(there.begin(), there.end(), bytes.begin() + 700000));
        source->skip(5000000);
        EXPECT_EQ(source->position(), 1000000u);
        EXPECT_TRUE(source->view(1).empty());
    }
}

TEST(Bytes, AnyPlaceOfAFileAndOfAPipe) {
    const Folder folder;
    const Bytes bytes = randomBytes(500000);
    writeFile(folder.file("b"), bytes);
    const Pipe pipe(folder, bytes);
    for (const std::string& path : {folder.file("b"), pipe.path}) {
        const auto source = openBytes(path);
        EXPECT_EQ(source->isPipe(), path == pipe.path);
        source->view(3);
        EXPECT_EQ(source->size(), bytes.size());
        Bytes part(1000);
        EXPECT_EQ(source->readAt(300000, part), 1000u);
        EXPECT_TRUE(std::equal(part.begin(), part.end(), bytes.begin() + 300000));
        EXPECT_EQ(source->readAt(499500, part), 500u);
        EXPECT_EQ(source->readAt(500001, part), 0u);
        EXPECT_EQ(source->position(), 0u);
        EXPECT_EQ(drained(*source, 1, 99999), bytes);
        const ByteView all = source->whole();
        EXPECT_TRUE(std::equal(all.begin(), all.end(), bytes.begin(), bytes.end()));
    }
    const auto source = openBytes(folder.file("b"));
    source->skip(10);
    EXPECT_EQ(source->whole().size(), bytes.size());
    EXPECT_EQ(source->view(1)[0], bytes[10]);
}

TEST(Bytes, AFileIsThereWhenItIsWholeAndNotBefore) {
    const Folder folder;
    const std::string path = folder.file("out");
    writeFile(path, Bytes{1, 2, 3});
    chmod(path.c_str(), 0640);
    {
        const auto sink = createBytes(path);
        sink->write(randomBytes(100000));
        EXPECT_EQ(readFile(path), (Bytes{1, 2, 3})) << "the old file stays";
        EXPECT_EQ(filesIn(folder), 2u);
    }
    EXPECT_EQ(readFile(path), (Bytes{1, 2, 3}));
    EXPECT_EQ(filesIn(folder), 1u) << "nothing is left of the unfinished one";
    const auto sink = createBytes(path);
    sink->write(Bytes{4, 5});
    sink->write(randomBytes(70000));
    sink->patch(1, Bytes{6});
    EXPECT_EQ(sink->position(), 70002u);
    sink->finish();
    sink->finish();
    const Bytes there = readFile(path);
    EXPECT_EQ(there.size(), 70002u);
    EXPECT_EQ((Bytes{there[0], there[1]}), (Bytes{4, 6}));
    struct stat s {};
    stat(path.c_str(), &s);
    EXPECT_EQ(s.st_mode & 0777, 0640u) << "the rights of the old file";
    EXPECT_EQ(filesIn(folder), 1u);
}

TEST(Bytes, ALinkStaysALink) {
    const Folder folder;
    writeFile(folder.file("real"), Bytes{1});
    std::filesystem::create_symlink("real", folder.file("link"));
    writeFile(folder.file("link"), Bytes{2});
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(readFile(folder.file("real")), Bytes{2});
}

TEST(Bytes, SinksGoBack) {
    const Folder folder;
    const auto exercise = [](ByteSink& sink) {
        ASSERT_TRUE(sink.seekable());
        sink.write(Bytes(10, 1));
        sink.patch(20, Bytes(5, 2)); // leaves a gap of zeros
        EXPECT_EQ(sink.position(), 25u);
        sink.write(Bytes{3});
        sink.patch(0, Bytes{9});
        Bytes back(40, 77);
        EXPECT_EQ(sink.readBack(8, back), 18u);
        EXPECT_EQ((Bytes{back[0], back[2], back[12], back[17]}), (Bytes{1, 0, 2, 3}));
        sink.finish();
    };
    MemorySink memory, behind;
    exercise(memory);
    SpooledSink spooled(behind);
    exercise(spooled);
    const auto file = createBytes(folder.file("f"));
    exercise(*file);
    EXPECT_EQ(behind.bytes, memory.bytes);
    EXPECT_EQ(readFile(folder.file("f")), memory.bytes);
}

TEST(Bytes, TroubleIsNamed) {
    const Folder folder;
    const std::string nowhere = folder.file("none/out");
    EXPECT_EQ(errorOf([&] { createBytes(nowhere); }), nowhere + ": No such file or directory");
    EXPECT_EQ(errorOf([&] { openBytes(nowhere); }), nowhere + ": No such file or directory");
    EXPECT_EQ(errorOf([&] { createBytes(folder.path); }), folder.path + ": Is a directory");
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(errorOf([] { writeFile("/dev/full", Bytes(100000)); }), "/dev/full: No space left on device");
    }
    // A name is put ahead once.
    const auto inner = [](const std::string& text) { return [=]() -> int { throw Error(text); }; };
    EXPECT_EQ(errorOf([&] { named("a", inner("x")); }), "a: x");
    EXPECT_EQ(errorOf([&] { named("b", [&] { return named("a", inner("x")); }); }), "a: x");
}

TEST(Bytes, AnInterruptedCommandRemovesWhatIsNotFinished) {
    const Folder folder;
    const auto sink = createBytes(folder.file("out"));
    sink->write(Bytes(100));
    EXPECT_EQ(filesIn(folder), 1u);
    removeUnfinishedFiles();
    EXPECT_EQ(filesIn(folder), 0u);
}
