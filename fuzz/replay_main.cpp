// Runs a fuzz target over every file of a directory, for builds without libFuzzer. An empty directory is a failure.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s directory\n", argv[0]);
        return 2;
    }
    std::size_t count = 0;
    for (std::filesystem::directory_entry const &entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<char> const bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const *>(bytes.data()), bytes.size());
        ++count;
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
