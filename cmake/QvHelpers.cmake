# AddressSanitizer options every test runs with. LeakSanitizer's check at exit crashes ("Tracer
# caught signal 11", a bogus dynamic TLS range) on this glibc when it walks the dynamic TLS of
# producers loaded with dlopen; without tracking __tls_get_addr it scans everything else.
set(QV_TEST_ASAN_OPTIONS "intercept_tls_get_addr=0")

# qv_test_environment(out VAR=value ...) sets \a out to the environment list of a test: the
# given variables, with QV_TEST_ASAN_OPTIONS in front of the test's own ASAN_OPTIONS.
function(qv_test_environment out)
    set(result "")
    set(asanOptions "${QV_TEST_ASAN_OPTIONS}")
    foreach(entry ${ARGN})
        if(entry MATCHES "^ASAN_OPTIONS=(.*)$")
            string(APPEND asanOptions ":${CMAKE_MATCH_1}")
        else()
            list(APPEND result "${entry}")
        endif()
    endforeach()
    if(QV_SANITIZE MATCHES "address")
        list(APPEND result "ASAN_OPTIONS=${asanOptions}")
    endif()
    set(${out} "${result}" PARENT_SCOPE)
endfunction()

# qv_add_test(Name SOURCES a.cpp b.cpp [LIBS ...] [LABELS unit|integration|corpus|fuzz|stress]
#             [TIMEOUT seconds] [ENV VAR=value ...] [NO_MAIN])
# Builds one GoogleTest executable and registers it with CTest. Every test sees the build's
# producer folder on GENICAM_GENTL64_PATH and the shared description corpus in QV_GENICAM_XML_DIR.
function(qv_add_test name)
    cmake_parse_arguments(T "NO_MAIN" "TIMEOUT" "SOURCES;LIBS;LABELS;ENV;DEPENDS" ${ARGN})
    add_executable(${name} ${T_SOURCES})
    if(T_NO_MAIN)
        target_link_libraries(${name} PRIVATE GTest::gtest GTest::gmock ${T_LIBS} Threads::Threads)
    else()
        target_link_libraries(${name} PRIVATE GTest::gtest_main GTest::gmock ${T_LIBS} Threads::Threads)
    endif()
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests/support)
    if(T_DEPENDS)
        add_dependencies(${name} ${T_DEPENDS})
    endif()
    add_test(NAME ${name} COMMAND ${name})
    if(NOT T_LABELS)
        set(T_LABELS unit)
    endif()
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 300)
    endif()
    qv_test_environment(environment "GENICAM_GENTL64_PATH=${QV_GENTL_BUILD_DIR}"
        "QV_GENICAM_XML_DIR=${QV_GENICAM_XML_DIR}" "QV_BUILD_DIR=${CMAKE_BINARY_DIR}"
        "QV_SOURCE_DIR=${CMAKE_SOURCE_DIR}" ${T_ENV})
    set_tests_properties(${name} PROPERTIES LABELS "${T_LABELS}" TIMEOUT ${T_TIMEOUT} ENVIRONMENT "${environment}")
endfunction()

# Where the shared corpus of real descriptions lives (tests skip when it is absent).
if(NOT DEFINED QV_GENICAM_XML_DIR)
    get_filename_component(QV_GENICAM_XML_DIR "${CMAKE_SOURCE_DIR}/../shared/genicam-xml" ABSOLUTE)
endif()
set(QV_GENICAM_XML_DIR "${QV_GENICAM_XML_DIR}" CACHE PATH "Folder of real GenICam descriptions")

# qv_add_producer(target SOURCES ...) builds a GenTL producer named lib<target>.cti into the
# build tree's producer folder.
function(qv_add_producer target)
    cmake_parse_arguments(P "" "OUTPUT_NAME" "SOURCES;LIBS" ${ARGN})
    add_library(${target} MODULE ${P_SOURCES})
    if(NOT P_OUTPUT_NAME)
        set(P_OUTPUT_NAME ${target})
    endif()
    set_target_properties(${target} PROPERTIES PREFIX "lib" SUFFIX ".cti" OUTPUT_NAME ${P_OUTPUT_NAME}
        LIBRARY_OUTPUT_DIRECTORY ${QV_GENTL_BUILD_DIR})
    target_link_libraries(${target} PRIVATE ${P_LIBS} Threads::Threads)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
endfunction()
