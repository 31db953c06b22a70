// In place of libFuzzer, where the compiler has none: hands each file of the folders named to the program, once.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

/// What mutators build on; nothing is changed here.
extern "C" size_t LLVMFuzzerMutate(uint8_t*, size_t size, size_t);
extern "C" size_t LLVMFuzzerMutate(uint8_t*, size_t size, size_t)
{
    return size;
}

int main(int argc, char** argv)
{
    size_t count = 0;
    for (int index = 1; index < argc; ++index) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[index])) {
            if (!entry.is_regular_file()) {
                continue;
            }
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++count;
        }
    }
    printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
