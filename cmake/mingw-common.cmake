# Cross compilation with MinGW-w64 for one target triplet (set MINGW_TRIPLET before including this).
# Fails at configure time when a tool of the triplet is missing, naming the package to install.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${MINGW_PROCESSOR})

foreach(tool gcc g++ windres widl)
  string(TOUPPER "${tool}" var)
  string(REPLACE "+" "X" var "${var}")
  find_program(MINGW_${var} NAMES ${MINGW_TRIPLET}-${tool} ${MINGW_TRIPLET}-${tool}-win32)
  if(NOT MINGW_${var})
    message(FATAL_ERROR "${MINGW_TRIPLET}-${tool} not found: install ${MINGW_PACKAGE} and mingw-w64-tools")
  endif()
endforeach()

set(CMAKE_C_COMPILER ${MINGW_GCC})
set(CMAKE_CXX_COMPILER ${MINGW_GXX})
set(CMAKE_RC_COMPILER ${MINGW_WINDRES})
set(RX9400_WIDL ${MINGW_WIDL} CACHE FILEPATH "IDL compiler of the cross toolchain")

set(CMAKE_FIND_ROOT_PATH /usr/${MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The DLLs must run with nothing beside them: link the compiler's runtime statically.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
