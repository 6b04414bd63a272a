// Uses the installed library through its installed headers: points the platform root at
// a directory and checks that a camera path resolves under it.
#include "platform/PlatformRoot.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <directory>\n", argv[0]);
        return 2;
    }
    const std::string strRoot = argv[1];
    PlatformRoot::set(strRoot + "/");
    const std::string strResolved = PlatformRoot::resolve("/mnt/mtd/Config");
    PlatformRoot::set("/");
    if (strResolved != strRoot + "/mnt/mtd/Config") {
        std::fprintf(stderr, "resolved to %s\n", strResolved.c_str());
        return 1;
    }
    std::printf("%s\n", strResolved.c_str());
    return 0;
}
