# Sourced, after packages.sh. The kit for Windows programs: Qt, FFmpeg and libqrencode, built by the
# cross compiler from the distribution's source packages, in the versions it ships. It lies outside
# of the tree, in the cache, and each part is built once: a run that was stopped goes on where it
# ended. FFmpeg is there twice, as tests also encode: kit/test has the encoders.
. "$root/scripts/lib/windows-cache.sh"

kit=$cache/kit
host=x86_64-w64-mingw32
kit_packages="g++-mingw-w64-x86-64-posix mingw-w64-tools libz-mingw-w64-dev nasm g++ make cmake ninja-build \
    pkg-config dpkg-dev bzip2 patch python3 perl"
qt_configuration="-opensource -confirm-license -release -shared -xplatform win32-g++ \
    -device-option CROSS_COMPILE=$host- -nomake examples -nomake tests -nomake tools -no-dbus \
    -no-sql-sqlite -no-feature-sql -opengl dynamic -no-angle -no-icu -no-openssl -schannel -qt-zlib \
    -qt-libpng -qt-libjpeg -qt-pcre -qt-freetype -qt-harfbuzz -silent"
# In this order: each folder needs some before it.
qt_folders="tools/bootstrap tools/moc tools/rcc tools/tracegen tools/uic tools/qvkgen 3rdparty/pcre2 \
    corelib winmain 3rdparty/libpng 3rdparty/libjpeg 3rdparty/freetype 3rdparty/harfbuzz-ng network \
    concurrent testlib gui platformheaders widgets printsupport platformsupport/eventdispatchers \
    platformsupport/fontdatabases platformsupport/themes platformsupport/accessibility \
    platformsupport/windowsuiautomation plugins/platforms/windows plugins/platforms/offscreen \
    plugins/imageformats/gif plugins/imageformats/ico plugins/imageformats/jpeg \
    plugins/styles/windowsvista plugins/printsupport/windows"

# step NAME COMMAND...: runs it and tells how long it took; what it says is kept for a failure.
step() {
    local name=$1 log=$cache/logs/$1.log start=$SECONDS status
    shift
    mkdir -p "$cache/logs"
    printf '%-28s' "$name"
    # Not as a condition, which would let it go on after a failure.
    set +e
    ( set -e; "$@" ) >"$log" 2>&1
    status=$?
    set -e
    if [ $status -ne 0 ]; then
        echo " failed after $((SECONDS - start)) s, see $log:"
        tail -n 20 "$log"
        exit 1
    fi
    printf ' %5d s\n' $((SECONDS - start))
}

# once NAME COMMAND...: a step that isn't run again, unless the command is another one.
once() {
    local stamp=$cache/done/$1
    [ "${*:2}" != "$(cat "$stamp" 2>/dev/null)" ] || return 0
    step "$@"
    mkdir -p "$cache/done"
    echo "${*:2}" >"$stamp"
}

# mend FILE EXPRESSION: an expression of sed that must change something.
mend() {
    cp "$1" "$1.before"
    sed -i "$2" "$1"
    ! cmp -s "$1" "$1.before" || { echo "nothing to mend in $1"; return 1; }
    rm "$1.before"
}

# What a compiler was about to write when an earlier run was broken off is empty, and newer than its
# source: it would be taken for done.
in_folder() { # FOLDER COMMAND...
    mkdir -p "$1"
    cd "$1"
    find . -name '*.o' -empty -delete
    shift
    "$@"
}

source_apt() {
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$cache/apt/lists" \
        -o Dir::State::Lists="$cache/apt/state" -o Dir::Cache="$cache/apt/cache" \
        -o APT::Sandbox::User="$(id -un)" "$@"
}

# What this system installs from, asked for sources. Nothing of the system's own is changed.
list_sources() {
    local release
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    mkdir -p "$cache/apt/lists" "$cache/apt/state/partial" "$cache/apt/cache/archives/partial"
    cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
        sed -n "/-backports/d; s/^deb \(.* $release.*\)/deb-src \1/p" >"$cache/apt/lists/lines.list"
    awk -v RS= -v ORS='\n\n' "/Suites:[^\n]*$release/ && !/Enabled: *no/" \
        /etc/apt/sources.list.d/*.sources 2>/dev/null |
        sed "s/^Types:.*/Types: deb-src/; s/ *$release-backports[^ ]*//" \
            >"$cache/apt/lists/stanzas.sources"
    source_apt update
}

# Unpacks the source packages below $cache/src and mends them; stopped half-way it begins anew.
fetch_sources() {
    local sources=$cache/src.part # for source_of
    list_sources
    rm -rf "$sources" "$cache/src"
    mkdir -p "$sources"
    cd "$sources"
    source_apt source qtbase-opensource-src qtmultimedia-opensource-src qtsvg-opensource-src \
        ffmpeg x264 x265
    # Nothing of the distribution's own part of it is needed.
    source_apt --tar-only --download-only source qrencode
    tar xf qrencode_*.orig.tar.*
    mend_qtbase
    mend_qtsvg
    mv "$sources" "$cache/src"
}

# The folder that a source package became.
source_of() {
    local found
    found=$(find "${sources:-$cache/src}" -maxdepth 1 -type d -name "$1-[0-9]*" | sort -V | tail -n 1)
    [ -n "$found" ] && echo "$found"
}

# The cross compiler by its plain names, whichever the system prefers: threads are posix ones, and no
# library tells where its sources lay.
name_compiler() {
    local tool
    rm -rf "$cache/bin"
    mkdir -p "$cache/bin"
    for tool in gcc g++; do
        cat >"$cache/bin/$host-$tool" <<SCRIPT
#!/bin/sh
exec "$(command -v "$host-$tool-posix")" "-ffile-prefix-map=$cache=." "\$@"
SCRIPT
        chmod +x "$cache/bin/$host-$tool"
    done
}

mend_qtbase() {
    cd "$(source_of qtbase-opensource-src)"
    # Libraries are named in mixed case, the cross compiler's files are lower case.
    mend src/network/ssl/ssl.pri 's/-lSecur32/-lsecur32/; s/-lCrypt32/-lcrypt32/'
    # OpenGL chosen at run time includes EGL's headers, which only the folder of ANGLE has.
    mend src/plugins/platforms/windows/windows.pri \
        '/^# Dynamic GL needs both WGL and EGL/{n;s/^qtConfig(dynamicgl) {/&\n    !qtConfig(angle): INCLUDEPATH += $$QT_SOURCE_TREE\/src\/3rdparty\/angle\/include/}'
    # A second platform plugin, not wanted, that compiles every file of the first one again.
    mend src/plugins/platforms/platforms.pro \
        's/^qtConfig(direct3d11_1):qtConfig(direct2d1_1)/false:&/'
    # The distribution's archive leaves out the headers for graphics tablets.
    sed -i 's/QT_CONFIG(tabletevent)/0/' src/plugins/platforms/windows/*.cpp src/plugins/platforms/windows/*.h
    mend src/plugins/platforms/windows/qwindowstabletsupport.cpp '1i #if 0'
    echo '#endif' >>src/plugins/platforms/windows/qwindowstabletsupport.cpp
    mend mkspecs/common/gcc-base.conf 's/-O3/-O2/' # half again as fast to build
}

configure_qtbase() { # OPTION...
    rm -f "$cache"/done/{qtbase-*,finish-qtbase,qtmultimedia,qtsvg} # made with other options
    "$(source_of qtbase-opensource-src)/configure" "$@" -prefix "$kit" -hostprefix "$kit"
    make sub-src-qmake_all
}

build_qt_folder() {
    make -j"$(nproc)" -C "$1"
    make -C "$1" install
}

finish_qtbase() {
    make install_mkspecs
    cp bin/qmake "$kit/bin/"
    cat >"$kit/bin/qt.conf" <<CONF
[Paths]
Prefix=$kit
HostPrefix=$kit
TargetSpec=win32-g++
HostSpec=linux-g++
Sysroot=
SysrootifyPrefix=false
CONF
}

build_qtbase() {
    local folder
    # shellcheck disable=SC2086 # a list of options
    once configure-qtbase in_folder "$cache/build/qtbase" configure_qtbase $qt_configuration
    for folder in $qt_folders; do
        once "qtbase-${folder//\//-}" in_folder "$cache/build/qtbase/src" build_qt_folder "$folder"
    done
    once finish-qtbase in_folder "$cache/build/qtbase" finish_qtbase
}

build_qmake_part() { # SOURCE FOLDER
    "$kit/bin/qmake" -o Makefile "$1"
    make -j"$(nproc)"
    make install
}

# The library and the plug-in that plays through waveOut. The library's installation tells qmake of
# the kind of plug-in, so it comes first.
build_multimedia() {
    local source
    source=$(source_of qtmultimedia-opensource-src)
    "$kit/bin/qmake" "$source" -- -no-directshow -no-wmf -no-evr
    (in_folder src/multimedia build_qmake_part "$source/src/multimedia/multimedia.pro")
    in_folder src/plugins/windowsaudio build_qmake_part \
        "$source/src/plugins/windowsaudio/windowsaudio.pro"
}

# The cross compiler's zlib: the kit's Qt keeps its own to itself.
mend_qtsvg() {
    mend "$(source_of qtsvg-opensource-src)/src/svg/svg.pro" \
        's/^    QT_PRIVATE += zlib-private/    LIBS_PRIVATE += -lz/'
}

build_svg() { # for tests alone
    "$kit/bin/qmake" "$(source_of qtsvg-opensource-src)"
    make sub-src-qmake_all
    in_folder src/svg build_qmake_part "$(source_of qtsvg-opensource-src)/src/svg/svg.pro"
}

build_x264() {
    "$(source_of x264)/configure" --host=$host --cross-prefix=$host- --prefix="$kit/test" \
        --enable-shared --disable-cli --disable-opencl
    make -j"$(nproc)"
    make install
}

build_x265() {
    cmake -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_SYSTEM_NAME=Windows \
        -DCMAKE_SYSTEM_PROCESSOR=x86_64 -DCMAKE_C_COMPILER=$host-gcc -DCMAKE_CXX_COMPILER=$host-g++ \
        -DCMAKE_RC_COMPILER=$host-windres -DCMAKE_INSTALL_PREFIX="$kit/test" -DENABLE_CLI=OFF \
        -DCMAKE_ASM_NASM_FLAGS=-w-macro-params-legacy "$(source_of x265)/source"
    ninja
    ninja install
}

# What cameras send and no more.
ffmpeg_parts="--enable-protocol=file,pipe,data,http,rtp,udp,tcp \
    --enable-demuxer=rtsp,rtp,sdp,h264,hevc,aac,wav,mov,mpegts,pcm_s16le,pcm_alaw,pcm_mulaw \
    --enable-decoder=h264,hevc,mpeg4,mjpeg,aac,aac_latm,mp2,mp3,opus,adpcm_g722,adpcm_g726 \
    --enable-decoder=adpcm_g726le,pcm_s16le,pcm_s16be,pcm_u8,pcm_alaw,pcm_mulaw \
    --enable-parser=h264,hevc,mpeg4video,mjpeg,aac,aac_latm,mpegaudio,opus \
    --enable-dxva2 --enable-hwaccel=h264_dxva2,hevc_dxva2 \
    --enable-bsf=h264_mp4toannexb,hevc_mp4toannexb,aac_adtstoasc,extract_extradata,h264_metadata,hevc_metadata \
    --enable-bsf=dca_core"
# And what tests make their clips with.
ffmpeg_test_parts="--enable-gpl --enable-libx264 --enable-libx265 \
    --enable-encoder=libx264,libx265,aac,pcm_alaw,pcm_mulaw --enable-muxer=mp4,matroska,mpegts,rtp \
    --enable-demuxer=matroska,srt --enable-decoder=ayuv,rawvideo,dca,text,subrip"

build_ffmpeg() { # PREFIX OPTION...
    PKG_CONFIG_LIBDIR="$kit/test/lib/pkgconfig" "$(source_of ffmpeg)/configure" --prefix="$1" \
        --enable-cross-compile --cross-prefix=$host- --arch=x86_64 --target-os=mingw32 \
        --pkg-config=pkg-config --enable-shared --disable-static --disable-programs --disable-doc \
        --disable-debug --disable-everything --disable-autodetect --enable-w32threads \
        --disable-avdevice --disable-avfilter --disable-postproc --enable-network \
        "${@:2}"
    mend config.h 's/--prefix=[^ ]* //' # it can be asked for at run time
    make -j"$(nproc)"
    make install
}

build_qrencode() {
    "$(source_of qrencode)/configure" --host=$host --prefix="$kit" --without-tools --enable-shared \
        --disable-static --disable-thread-safety
    make
    make install
}

build_part() { # NAME COMMAND...: once, in its own build folder
    once "$1" in_folder "$cache/build/$1" "${@:2}"
}

# What the kit consists of, told once all of it is there.
kit_options() { echo "$qt_configuration $qt_folders $ffmpeg_parts $ffmpeg_test_parts"; }
windows_kit_is_there() { [ "$(kit_options)" = "$(cat "$cache/done/kit" 2>/dev/null)" ]; }

make_windows_kit() (
    mkdir -p "$cache"
    exec 7>"$cache/lock"
    flock 7 # one at a time
    once name-compiler name_compiler
    PATH=$cache/bin:$PATH
    once fetch-sources fetch_sources
    build_part qrencode build_qrencode
    # shellcheck disable=SC2086 # lists of options
    build_part ffmpeg build_ffmpeg "$kit" $ffmpeg_parts
    build_part x264 build_x264
    build_part x265 build_x265
    # shellcheck disable=SC2086 # lists of options
    build_part ffmpeg-test build_ffmpeg "$kit/test" $ffmpeg_parts $ffmpeg_test_parts
    build_qtbase
    build_part qtmultimedia build_multimedia
    build_part qtsvg build_svg
    kit_options >"$cache/done/kit"
)

# Compiled objects stay in the cache too, so that a fresh clone compiles what has changed alone.
keep_objects() { export CCACHE_DIR=$cache/ccache CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1; }
