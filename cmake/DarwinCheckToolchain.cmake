# macOS by the cross compiler of the preset darwin-check (see DarwinCheck.cmake).
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${VANTOR_DARWIN_CHECK_ARCHITECTURE})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES
    VANTOR_DARWIN_CHECK_ARCHITECTURE VANTOR_DARWIN_CHECK_TOOLS)
# A program would need the C++ library built first.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

string(REPLACE arm64 aarch64 processor ${VANTOR_DARWIN_CHECK_ARCHITECTURE})
foreach(language C CXX OBJCXX)
    # The newest version whose C headers the compiler ships.
    set(CMAKE_${language}_COMPILER_TARGET ${processor}-macos.13.0)
endforeach()
set(CMAKE_C_COMPILER ${VANTOR_DARWIN_CHECK_TOOLS}/clang)
set(CMAKE_CXX_COMPILER ${VANTOR_DARWIN_CHECK_TOOLS}/clang++)
set(CMAKE_OBJCXX_COMPILER ${VANTOR_DARWIN_CHECK_TOOLS}/clang++)
set(CMAKE_AR ${VANTOR_DARWIN_CHECK_TOOLS}/ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${VANTOR_DARWIN_CHECK_TOOLS}/ranlib CACHE FILEPATH "")
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool llvm-install-name-tool-14 REQUIRED)
# The compiler brings its own headers.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE NEVER)
