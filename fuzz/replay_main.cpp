// Runs a fuzz target over the files named on the command line, without
// libFuzzer, so that the seed corpora run as ordinary tests.
#include <cstdint>
#include <cstdio>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        std::FILE *f = std::fopen(argv[i], "rb");
        if (f == nullptr) {
            std::fprintf(stderr, "cannot open %s\n", argv[i]);
            return 1;
        }
        std::vector<std::uint8_t> bytes;
        int c;
        while ((c = std::fgetc(f)) != EOF)
            bytes.push_back(static_cast<std::uint8_t>(c));
        std::fclose(f);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("replayed %d inputs\n", argc - 1);
    return 0;
}
