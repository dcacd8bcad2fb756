// Feeds a fuzz target with every file of a folder, where the fuzzer itself is not to be had.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    int numFiles = 0;
    std::error_code error;
    for (auto const& entry : std::filesystem::directory_iterator(argv[1], error)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        (void)LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
        ++numFiles;
    }
    if (numFiles == 0) {
        std::fprintf(stderr, "%s: no file in %s\n", argv[0], argv[1]);
        return 1;
    }
    std::printf("%d files\n", numFiles);
    return 0;
}
