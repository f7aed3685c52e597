# Fails if a DLL needs modules that do not come with the system, such as the compiler's run-time.
# usage: cmake -DOBJDUMP=program -DDLL=file -P dll_imports.cmake
cmake_minimum_required(VERSION 3.25)
set(system ADVAPI32 bcrypt COMCTL32 comdlg32 GDI32 KERNEL32 ktmw32 msvcrt ole32 OLEAUT32 SHELL32
    SHLWAPI USER32)
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${headers}")
if(NOT imports)
    message(FATAL_ERROR "no imports found in ${DLL}")
endif()
foreach(import ${imports})
    string(REGEX REPLACE "DLL Name: (.*)\\.[dD][lL][lL]" "\\1" name "${import}")
    if(NOT name IN_LIST system)
        message(FATAL_ERROR "${DLL} needs ${name}, which is not the system's")
    endif()
endforeach()
