# quillet_library(Name SOURCES file... [DEPENDS target...] [PRIVATE target...])
#
# The library Quillet<Name> of the directory Name. Its headers are included as "Name/Header.h", and
# only by targets that link it, because its include path contains only a link to its own directory.
function(quillet_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS;PRIVATE")
    set(target Quillet${name})
    set(includes ${PROJECT_BINARY_DIR}/include/${name})
    file(MAKE_DIRECTORY ${includes})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${includes}/${name} SYMBOLIC)

    add_library(${target} STATIC ${arg_SOURCES})
    target_include_directories(${target} PUBLIC ${includes})
    target_link_libraries(${target} PUBLIC ${arg_DEPENDS} PRIVATE ${arg_PRIVATE})
endfunction()
