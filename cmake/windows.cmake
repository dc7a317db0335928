# What a cross build for Windows takes from Debian: rapidjson's headers, which are the same everywhere, alone of all that
# stands in /usr/include. Debian has no log4cxx for Windows: the one here logs nothing.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include)
file(CREATE_LINK /usr/include/rapidjson ${PROJECT_BINARY_DIR}/include/rapidjson SYMBOLIC)
add_library(log4cxx INTERFACE)
target_include_directories(log4cxx SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/include ${CMAKE_CURRENT_LIST_DIR}/windows)
