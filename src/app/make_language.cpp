#include <cstdio>
#include <exception>

#include "lang/languagetexts.h"

// make-language TEXTS.tsv DVLang.sys: builds the language database.
int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make-language TEXTS.tsv DVLang.sys\n", stderr);
        return 2;
    }
    try {
        kolmera::buildLanguageDatabase(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-language: %s\n", error.what());
        return 1;
    }
}
