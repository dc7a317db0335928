# Usage: cmake -DOUTPUT=assets.cpp "-DFILES=path;..." -P embed.cmake
# Writes the files into a C++ source, by the paths that they are served under.
set(type.html "text/html; charset=utf-8")
set(type.js "text/javascript; charset=utf-8")
set(type.css "text/css; charset=utf-8")
set(type.svg "image/svg+xml")
set(type.webmanifest "application/manifest+json")

set(arrays "")
set(rows "")
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  get_filename_component(ending "${file}" LAST_EXT)
  if(NOT DEFINED type${ending})
    message(FATAL_ERROR "${file}: say the content type of ${ending} in embed.cmake")
  endif()
  string(MAKE_C_IDENTIFIER "${name}" array)
  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND arrays "constexpr char ${array}[] = {${bytes}};\n")
  string(REGEX REPLACE "^index.html$" "" path "${name}")
  string(APPEND rows "    {\"/${path}\", \"${type${ending}}\", {${array}, sizeof(${array})}},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"terminal/page/assets.h\"

namespace orvane::terminal {
namespace {

${arrays}
constexpr Asset kAssets[] = {
${rows}};

}  // namespace

std::span<const Asset> assets() { return kAssets; }

}  // namespace orvane::terminal
")
