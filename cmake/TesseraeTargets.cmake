# Flags shared by all of this project's own targets, and one function for each kind of target.

add_library(tesserae_flags INTERFACE)
target_compile_options(tesserae_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
    $<$<BOOL:${TESSERAE_WARNINGS_AS_ERRORS}>:-Werror>)
if(TESSERAE_SANITIZE)
    target_compile_options(tesserae_flags INTERFACE
        -fsanitize=${TESSERAE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tesserae_flags INTERFACE -fsanitize=${TESSERAE_SANITIZE})
endif()

# tesserae_add_library(NAME [dependencies...]): one folder of sources as a static library whose
# objects can go into a shared one. A folder of headers alone becomes an interface library. The
# property TESSERAE_LIBRARIES lists those that have objects.
function(tesserae_add_library name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    if(sources)
        add_library(${name} STATIC ${sources})
        set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
            CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
        set_property(GLOBAL APPEND PROPERTY TESSERAE_LIBRARIES ${name})
        target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(${name} PUBLIC ${ARGN} PRIVATE $<BUILD_INTERFACE:tesserae_flags>)
    else()
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(${name} INTERFACE ${ARGN})
    endif()
endfunction()

# tesserae_add_shared(NAME MAP [sources...]): a library for others to load. The version script keeps
# every symbol inside that it does not name, those of the standard library's templates too.
function(tesserae_add_shared name map)
    add_library(${name} SHARED ${ARGN})
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
        LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${map})
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:tesserae_flags>)
    if(NOT APPLE AND NOT WIN32)
        target_link_options(${name} PRIVATE
            -Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${map})
        if(NOT TESSERAE_SANITIZE)
            target_link_options(${name} PRIVATE -Wl,--no-undefined)
        endif()
    endif()
endfunction()

# tesserae_add_test(NAME [dependencies...]): every *.cpp of the calling folder in one GoogleTest
# binary, each test a ctest entry of its own.
function(tesserae_add_test name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${ARGN} tesserae_flags GTest::gtest GTest::gtest_main)
    # Tests take longer to build than to run.
    target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1>)
    # What libraries keep until the process ends is no leak of ours.
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 240 ENVIRONMENT
        LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tools/leaks.supp)
endfunction()

# tesserae_add_benchmark(NAME [dependencies...]): every *.cpp of the calling folder in one binary.
function(tesserae_add_benchmark name)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/bench)
    target_link_libraries(${name} PRIVATE ${ARGN} tesserae_flags benchmark::benchmark benchmark::benchmark_main)
endfunction()
