// Runs files through a fuzz target's entry point without libFuzzer: every file of each folder
// given on the command line (and every file given directly). Fails when it finds nothing to run,
// so that a misplaced corpus does not pass silently.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace
{
bool RunFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    size_t count = 0;
    bool ok = true;
    for (int i = 1; i < argc; ++i)
    {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path))
        {
            std::vector<std::filesystem::path> files;
            for (const auto& entry : std::filesystem::directory_iterator(path))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
            std::sort(files.begin(), files.end());
            for (const auto& file : files)
                count += RunFile(file) ? 1 : 0;
        }
        else
        {
            ok = RunFile(path) && ok;
            ++count;
        }
    }
    std::printf("replayed %zu inputs\n", count);
    return ok && count > 0 ? 0 : 1;
}
