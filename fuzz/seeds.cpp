// Writes what the fuzz targets start from: FOLDER/<target>/<n> for each, small files of our writers
// and hand-made ones. What they cannot make lies in fuzz/seeds.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "imaging/codecs/all.h"
#include "imaging/metadata/photoshop.h"
#include "imaging/support/sample_files.h"

using namespace kvn;
using namespace kvn::imaging;

namespace {

void write(const std::filesystem::path& folder, const std::vector<Bytes>& files) {
    std::filesystem::create_directories(folder);
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::ofstream out(folder / std::to_string(i), std::ios::binary);
        out.write(reinterpret_cast<const char*>(files[i].data()),
                  static_cast<std::streamsize>(files[i].size()));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: kvn_fuzz_seeds FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder(argv[1]);
    const std::pair<const char*, const Codec& (*)()> targets[] = {KVN_FUZZ_TARGETS};
    for (const auto& [name, codec] : targets)
        write(folder / name, test::sampleFiles(codec(), 17, 9));
    const auto metadata = test::fullMetadata();
    std::vector<Bytes> blocks{metadata->exif, metadata->iptc, photoshopFromIptc(metadata->iptc)};
    const std::vector<Bytes> jpegs = test::sampleFiles(jpegCodec(), 17, 9);
    blocks.insert(blocks.end(), jpegs.begin(), jpegs.end());
    write(folder / "metadata", blocks);
}
