# kelvo_resources(target script.rc)
#   Compiles a resource script and links it into an executable, where the resource calls find it from
#   the first statement of main on. Made anew when the script or anything that it names changes.
#   Only for targets that are no static library: out of an archive nothing would ask for it.
function(kelvo_resources target script)
    cmake_path(ABSOLUTE_PATH script BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    cmake_path(GET script STEM stem)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_${stem}_resources.cpp")
    add_custom_command(
        OUTPUT "${source}"
        COMMAND resource_compiler --depfile "${source}.d" -o "${source}" "${script}"
        DEPENDS resource_compiler "${script}"
        DEPFILE "${source}.d"
        COMMENT "Compiling resources ${stem}"
        VERBATIM)
    target_sources(${target} PRIVATE "${source}")
    target_link_libraries(${target} PRIVATE platform_base)
endfunction()
