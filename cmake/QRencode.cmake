# libqrencode by pkg-config, as QRencode.
find_package(PkgConfig REQUIRED)
pkg_check_modules(QRENCODE REQUIRED IMPORTED_TARGET libqrencode>=4.0)
add_library(QRencode ALIAS PkgConfig::QRENCODE)
