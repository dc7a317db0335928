# Usage: cmake -DFOLDER=. "-DFILES=path;..." -DBUNDLE=bundle -DPAGE=index.html -DWORKER=worker.js -DESBUILD=esbuild
#   -DGZIP=gzip -DBROTLI=brotli -P embed.cmake
# Writes the files into FOLDER/assets.cpp, by the paths that they are served under, plain and compressed. The worker is
# given the hashes of all files but the pictures, so it changes whenever one of them does. The page is given the name of
# the script's main part, which it would otherwise learn one round trip later.
set(type.html "text/html; charset=utf-8")
set(type.js "text/javascript; charset=utf-8")
set(type.css "text/css; charset=utf-8")
set(type.svg "image/svg+xml")
set(type.png "image/png")
set(type.webmanifest "application/manifest+json")

# Appends the bytes as an array to `arrays`.
function(add_array name file)
  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  set(arrays "${arrays}constexpr char ${name}[] = {${bytes}};\n" PARENT_SCOPE)
endfunction()

function(add_file file)
  get_filename_component(name "${file}" NAME)
  get_filename_component(ending "${file}" LAST_EXT)
  if(NOT DEFINED type${ending})
    message(FATAL_ERROR "${file}: say the content type of ${ending} in embed.cmake")
  endif()
  string(MAKE_C_IDENTIFIER "${name}" array)
  string(REGEX REPLACE "^/index.html$" "/" path "/${name}")
  file(SHA256 "${file}" hash)
  string(SUBSTRING "${hash}" 0 16 hash)
  add_array(${array} "${file}")
  set(bodies "{${array}, sizeof(${array})}")
  foreach(tool "${GZIP};-9nc;${file}" "${BROTLI};-cq;11;-w;24;${file}")
    list(GET tool 0 program)
    get_filename_component(coding "${program}" NAME)
    set(packed "${FOLDER}/${name}.${coding}")
    if(ending STREQUAL ".png")
      string(APPEND bodies ", {}")
    else()
      execute_process(COMMAND ${tool} OUTPUT_FILE "${packed}" COMMAND_ERROR_IS_FATAL ANY)
      add_array(${array}_${coding} "${packed}")
      string(APPEND bodies ", {${array}_${coding}, sizeof(${array}_${coding})}")
    endif()
  endforeach()
  if(NOT ending STREQUAL ".png")
    set(shell "${shell}\"${path}\": \"${hash}\", " PARENT_SCOPE)
  endif()
  set(arrays "${arrays}" PARENT_SCOPE)
  set(rows "${rows}    {\"${path}\", \"${type${ending}}\", \"${hash}\", ${bodies}},\n" PARENT_SCOPE)
endfunction()

file(GLOB scripts "${BUNDLE}/*.js")
file(GLOB main RELATIVE "${BUNDLE}" "${BUNDLE}/chunk-*.js")
file(READ "${PAGE}" page)
string(REPLACE "__MAIN__" "${main}" page "${page}")
file(WRITE "${FOLDER}/index.html" "${page}")
foreach(file IN LISTS FILES scripts ITEMS "${BUNDLE}/app.css" "${FOLDER}/index.html")
  add_file("${file}")
endforeach()
execute_process(COMMAND "${ESBUILD}" --minify --log-level=warning "${WORKER}" OUTPUT_VARIABLE worker COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "__SHELL__" "${shell}" worker "${worker}")
file(WRITE "${FOLDER}/worker.js" "${worker}")
add_file("${FOLDER}/worker.js")

file(WRITE "${FOLDER}/assets.cpp" "#include \"terminal/page/assets.h\"

namespace orvane::terminal {
namespace {

${arrays}
constexpr Asset kAssets[] = {
${rows}};

}  // namespace

std::span<const Asset> assets() { return kAssets; }

}  // namespace orvane::terminal
")
