set(MINGW_TRIPLET i686-w64-mingw32)
set(MINGW_PROCESSOR i686)
set(MINGW_PACKAGE g++-mingw-w64-i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
