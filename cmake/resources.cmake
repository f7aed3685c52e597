# Resources come from one set of .rc files for both builds: windres compiles them, and they are linked
# into the DLL on Windows, laid into the section .rsrc of the ELF elsewhere.
#
# add_resources(target RC file DEPENDS file... INCLUDES folder...)
# Gives a program or module the resources of one .rc file. DEPENDS are the files that it includes
# (headers, scripts, bitmaps), INCLUDES further folders in which they lie; the source root and the
# folder of the .rc file always count. The add-in's own file is resources/addin.rc: an owner of
# resources adds a file of their own to resources/, includes it there, gives its ids a line in
# resource_ids.h, and lists it in resources/CMakeLists.txt.
find_program(QVD_WINDRES x86_64-w64-mingw32-windres REQUIRED)

function(add_resources target)
    cmake_parse_arguments(arg "" "RC" "DEPENDS;INCLUDES" ${ARGN})
    cmake_path(GET arg_RC PARENT_PATH folder)
    cmake_path(GET arg_RC STEM name)
    set(base ${CMAKE_CURRENT_BINARY_DIR}/${target}_${name})
    set(compile ${QVD_WINDRES} --preprocessor=${CMAKE_CXX_COMPILER})
    foreach(argument -E -xc-header -w -DRC_INVOKED)
        list(APPEND compile --preprocessor-arg=${argument})
    endforeach()
    foreach(include ${PROJECT_SOURCE_DIR} ${folder} ${arg_INCLUDES})
        list(APPEND compile -I${include})
    endforeach()
    if(WIN32)
        add_custom_command(OUTPUT ${base}.o
            COMMAND ${compile} -O coff ${arg_RC} ${base}.o
            DEPENDS ${arg_RC} ${arg_DEPENDS}
            VERBATIM)
    else()
        # The note says that the object needs no executable stack.
        add_custom_command(OUTPUT ${base}.o
            COMMAND ${compile} -O res ${arg_RC} ${base}.res
            COMMAND ${CMAKE_OBJCOPY} -I binary -O elf64-x86-64 -B i386:x86-64
                --strip-all --set-section-alignment .data=16
                --rename-section .data=.rsrc,alloc,load,readonly,data,contents
                --add-section .note.GNU-stack=/dev/null
                --set-section-flags .note.GNU-stack=contents,readonly
                ${base}.res ${base}.o
            DEPENDS ${arg_RC} ${arg_DEPENDS}
            BYPRODUCTS ${base}.res
            VERBATIM)
    endif()
    set_source_files_properties(${base}.o PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
    target_sources(${target} PRIVATE ${base}.o)
endfunction()
