# Options of all our targets.
add_library(pocketagent_options INTERFACE)
target_compile_features(pocketagent_options INTERFACE cxx_std_20)
target_include_directories(pocketagent_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(pocketagent_options INTERFACE
  -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=  # log lines name sources relative to the root
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough
  # When GCC 12 optimises, -Wnull-dereference and -Wrestrict give false warnings about its own library.
  $<$<CXX_COMPILER_ID:Clang>:-Wnull-dereference>
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wno-restrict>)

option(POCKETAGENT_WERROR "Warnings are errors" ON)
if(POCKETAGENT_WERROR)
  target_compile_options(pocketagent_options INTERFACE -Werror)
endif()

set(POCKETAGENT_SANITIZE "" CACHE STRING "Sanitizers, a value for -fsanitize")
if(POCKETAGENT_SANITIZE)
  add_compile_options(-fsanitize=${POCKETAGENT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${POCKETAGENT_SANITIZE})
  add_compile_options(
    # rapidjson's own stack adds an offset to a null pointer.
    $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=pointer-overflow>
    # With the sanitizer's checks, GCC no longer sees that std::regex sets its members.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)  # Asio's bare fences
endif()

if(CMAKE_BUILD_TYPE STREQUAL Release)  # Debian's hardening
  add_compile_options(-fstack-protector-strong -D_FORTIFY_SOURCE=2)
  add_link_options(LINKER:-z,relro,-z,now)
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
