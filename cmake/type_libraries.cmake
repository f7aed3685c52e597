# Type libraries come from one IDL file for both builds: widl compiles it on Windows, our own reader
# (type_library.py) elsewhere.
#
# add_type_library(NAME idl included...)
# Makes NAME.tlb in the calling folder's binary folder and the header <folder>/generated/NAME.h of
# its interfaces and ids, in both builds; sets <NAME>_TLB and <NAME>_HEADER for the caller.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(QVD_IDL_FOLDER ${CMAKE_CURRENT_LIST_DIR}/../platform/idl)
set(QVD_IDL_READER ${CMAKE_CURRENT_LIST_DIR}/type_library.py)
set(QVD_IDL_FILES ${QVD_IDL_READER} ${CMAKE_CURRENT_LIST_DIR}/idl_reader.py
    ${QVD_IDL_FOLDER}/automation.idl)
set(QVD_GENERATED ${PROJECT_BINARY_DIR}/generated)

if(WIN32)
    find_program(QVD_WIDL x86_64-w64-mingw32-widl REQUIRED)
    set(base ${PROJECT_BINARY_DIR}/idl/stdole2.tlb)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/idl)
    # widl asks for the library of the base interfaces by name; the reference goes by its id.
    add_custom_command(OUTPUT ${base}
        COMMAND ${QVD_WIDL} -t -I${QVD_IDL_FOLDER} -o ${base} ${QVD_IDL_FOLDER}/stdole2.idl
        DEPENDS ${QVD_IDL_FOLDER}/stdole2.idl ${QVD_IDL_FOLDER}/automation.idl
        VERBATIM)
    add_custom_target(qvd_base_type_library DEPENDS ${base})
endif()

function(add_type_library name idl)
    set(library ${CMAKE_CURRENT_BINARY_DIR}/${name}.tlb)
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
        OUTPUT_VARIABLE folder)
    set(header ${QVD_GENERATED}/${folder}/generated/${name}.h)
    if(WIN32)
        set(base ${PROJECT_BINARY_DIR}/idl)
        add_custom_command(OUTPUT ${library}
            COMMAND ${QVD_WIDL} -t -I${QVD_IDL_FOLDER} -L${base} -o ${library} ${idl}
            DEPENDS ${idl} ${ARGN} ${QVD_IDL_FOLDER}/automation.idl ${base}/stdole2.tlb
                qvd_base_type_library
            VERBATIM)
    else()
        add_custom_command(OUTPUT ${library}
            COMMAND Python3::Interpreter ${QVD_IDL_READER} binary ${library} ${idl}
                ${QVD_IDL_FOLDER}
            DEPENDS ${idl} ${ARGN} ${QVD_IDL_FILES}
            VERBATIM)
    endif()
    add_custom_command(OUTPUT ${header}
        COMMAND Python3::Interpreter ${QVD_IDL_READER} header ${header} ${idl} ${QVD_IDL_FOLDER}
        DEPENDS ${idl} ${ARGN} ${QVD_IDL_FILES}
        VERBATIM)
    set(${name}_TLB ${library} PARENT_SCOPE)
    set(${name}_HEADER ${header} PARENT_SCOPE)
endfunction()

# add_built_in_library(target name idl)
# Gives a target the C++ source of a library that the native layer itself has: the function `name`.
function(add_built_in_library target name idl)
    set(made ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    add_custom_command(OUTPUT ${made}
        COMMAND Python3::Interpreter ${QVD_IDL_READER} source ${made} ${name} ${idl}
            ${QVD_IDL_FOLDER}
        DEPENDS ${idl} ${QVD_IDL_FILES}
        VERBATIM)
    target_sources(${target} PRIVATE ${made})
endfunction()
