# FFmpeg 5.1 by pkg-config: FFmpeg for demuxing, decoding and resampling, FFmpegScale for scaling.
find_package(PkgConfig REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET
  libavformat>=59 libavcodec>=59 libavutil>=57 libswresample>=4)
pkg_check_modules(FFMPEG_SCALE REQUIRED IMPORTED_TARGET libswscale>=6 libavutil>=57)
add_library(FFmpeg ALIAS PkgConfig::FFMPEG)
add_library(FFmpegScale ALIAS PkgConfig::FFMPEG_SCALE)
