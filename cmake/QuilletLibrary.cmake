# quillet_library(Folder SOURCES file... [DEPENDS target...] [PRIVATE target...])
#
# One library, Quillet<Folder>, for one folder of the tree. Its headers are included as "Folder/Name.h", and
# only by targets that link it: each library's include path holds nothing but a link to its own folder.
function(quillet_library folder)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS;PRIVATE")
    set(target Quillet${folder})
    set(includes ${PROJECT_BINARY_DIR}/include/${folder})
    file(MAKE_DIRECTORY ${includes})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${includes}/${folder} SYMBOLIC)

    add_library(${target} STATIC ${arg_SOURCES})
    target_include_directories(${target} PUBLIC ${includes})
    target_link_libraries(${target} PUBLIC ${arg_DEPENDS} PRIVATE ${arg_PRIVATE})
endfunction()
