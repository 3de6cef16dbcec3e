#!/usr/bin/env bash
# clang-tidy over the sources, with the checks of .clang-tidy; every finding is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/packages.sh
install_packages build tidy

# clang reads the flags of its own configuration: g++'s precompiled headers are not for it.
cmake -G Ninja -S . -B build/tidy -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
cmake --build build/tidy --target kolmera_schema_source 2>/dev/null || true
git ls-files -- 'src/*.cpp' | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build/tidy --quiet
