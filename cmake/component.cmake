# One folder, one library, one test program.

# Flags that every target of ours shares. Warnings are errors; text is UTF-16 on every build.
add_library(qvd_flags INTERFACE)
target_compile_features(qvd_flags INTERFACE cxx_std_20)
target_include_directories(qvd_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(qvd_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    # At -O3 GCC 12 warns of every text put in front of a std::string (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(WIN32)
    target_compile_definitions(qvd_flags INTERFACE
        UNICODE _UNICODE STRICT NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0601 _WIN32_WINNT=0x0601)
endif()

if(QUVADA_SANITIZE)
    set(sanitize -fsanitize=${QUVADA_SANITIZE} -fno-omit-frame-pointer)
    if(QUVADA_SANITIZE MATCHES undefined)
        list(APPEND sanitize -fno-sanitize-recover=all)
    endif()
    if(QUVADA_LIBFUZZER)
        list(APPEND sanitize -fsanitize=fuzzer-no-link)
    endif()
    # The instrumented code hides value ranges from the compiler, which then warns of conversions
    # that it can prove harmless in the plain builds.
    target_compile_options(qvd_flags INTERFACE ${sanitize} -O1 -Wno-conversion
        # Options for one compiler are unknown to the other.
        $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-warning-option>)
    target_link_options(qvd_flags INTERFACE ${sanitize})
endif()

# add_component(name [SHARED] [EXCEPTIONS] SOURCES file... DEPENDS component... LIBRARIES target...)
# Makes the library qvd_<name> of the calling folder. DEPENDS names the folders whose headers it may
# include; LIBRARIES are foreign ones. Code compiles without exceptions unless EXCEPTIONS is given.
function(add_component name)
    cmake_parse_arguments(arg "SHARED;EXCEPTIONS" "" "SOURCES;DEPENDS;LIBRARIES" ${ARGN})
    if(arg_SHARED)
        add_library(qvd_${name} SHARED ${arg_SOURCES})
    else()
        add_library(qvd_${name} STATIC ${arg_SOURCES})
        set_target_properties(qvd_${name} PROPERTIES
            POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden)
    endif()
    if(NOT arg_EXCEPTIONS)
        target_compile_options(qvd_${name} PRIVATE -fno-exceptions)
    endif()
    list(TRANSFORM arg_DEPENDS PREPEND qvd_)
    target_link_libraries(qvd_${name} PUBLIC qvd_flags ${arg_DEPENDS} ${arg_LIBRARIES})
endfunction()

# add_component_tests(name SOURCES file... DEPENDS component... LIBRARIES target... NEEDS target...
#                     LOCK thing)
# Makes the test program <name>_tests; its tests carry the label <name>. NEEDS are programs and
# modules that the tests start or load. Tests with the same LOCK never run at the same time: Windows
# has one name space for the objects of all processes.
function(add_component_tests name)
    cmake_parse_arguments(arg "" "LOCK" "SOURCES;DEPENDS;LIBRARIES;NEEDS" ${ARGN})
    if(NOT QUVADA_TESTS)
        return()
    endif()
    add_executable(${name}_tests ${arg_SOURCES})
    list(TRANSFORM arg_DEPENDS PREPEND qvd_)
    target_link_libraries(${name}_tests PRIVATE
        ${arg_DEPENDS} ${arg_LIBRARIES} qvd_flags GTest::gmock GTest::gtest_main)
    if(arg_NEEDS)
        add_dependencies(${name}_tests ${arg_NEEDS})
    endif()
    if(arg_LOCK)
        set(lock RESOURCE_LOCK ${arg_LOCK})
    endif()
    gtest_discover_tests(${name}_tests
        DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS ${name} TIMEOUT 120 ${lock})
endfunction()
