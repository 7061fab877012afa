set(MINGW_TRIPLET x86_64-w64-mingw32)
set(MINGW_PROCESSOR x86_64)
set(MINGW_PACKAGE g++-mingw-w64-x86-64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
