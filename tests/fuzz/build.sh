#!/usr/bin/env bash
# Builds the fuzz targets as OSS-Fuzz does: into $OUT, with a zip of the initial inputs, a dictionary and libFuzzer's options for
# each, and the libraries that they need. $CC, $CXX, $CFLAGS, $CXXFLAGS, $LIB_FUZZING_ENGINE and $WORK are taken from the
# environment; without them: clang with libFuzzer, and the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/../.."

export CC=${CC:-clang} CXX=${CXX:-clang++}
export CFLAGS=${CFLAGS:--O1 -g1 -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all}
export CXXFLAGS=${CXXFLAGS:-$CFLAGS}
work=${WORK:-$PWD/build/oss-fuzz}
out=${OUT:-$PWD/build/oss-fuzz/out}

# Libraries are looked for beside the target, those that other libraries need included.
# The type of build adds no flags of its own.
cmake -S . -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= -DSFTPCLIENT_HARDENING=OFF \
    -DSFTPCLIENT_FUZZING_ENGINE="${LIB_FUZZING_ENGINE:--fsanitize=fuzzer}" \
    -DCMAKE_BUILD_RPATH="\$ORIGIN/lib" -DCMAKE_EXE_LINKER_FLAGS=-Wl,--disable-new-dtags >/dev/null
mapfile -t targets < <(tests/fuzz/targets)
cmake --build "$work" --target "${targets[@]}"

mkdir -p "$out/lib"
for target in "${targets[@]}"; do
    name=${target#fuzz_}
    cp "$work/tests/fuzz/$target" "$out/"
    # Not the C library's own, which belong to the machine that runs them.
    ldd "$work/tests/fuzz/$target" | sed -n 's/.* => \(\/[^ ]*\) .*/\1/p' |
        grep -vE '/(libc|libm|libdl|librt|libpthread|libresolv)\.so' | xargs cp --dereference --target-directory "$out/lib"
    rm -f "$out/${target}_seed_corpus.zip"
    (cd "tests/fuzz/corpus/$name" && cmake -E tar cf "$out/${target}_seed_corpus.zip" --format=zip -- *)
    printf '[libfuzzer]\nmax_len = 4096\ntimeout = 20\nclose_fd_mask = 3\n' >"$out/$target.options"
    if [ -f "tests/fuzz/$name.dict" ]; then
        cp "tests/fuzz/$name.dict" "$out/$target.dict"
    fi
done
echo "$out: ${targets[*]}"
