# How every target of the project is made.

# The flags of all our code. Contraction of a*b+c is off so that sums agree between processors.
add_library(tessel_flags INTERFACE)
target_compile_options(tessel_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                                              -Wnon-virtual-dtor -Woverloaded-virtual -ffp-contract=off)
if(TESSEL_WERROR)
    target_compile_options(tessel_flags INTERFACE -Werror)
endif()
if(TESSEL_SANITIZE)
    target_compile_options(tessel_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                  -fno-omit-frame-pointer)
    target_link_options(tessel_flags INTERFACE -fsanitize=address,undefined)
endif()

# tessel_objects(NAME SOURCES folder... INCLUDES folder... LINKS target...)
# An object library of all .cpp files below the folders.
function(tessel_objects name)
    cmake_parse_arguments(arg "" "" "SOURCES;INCLUDES;LINKS" ${ARGN})
    set(sources)
    foreach(folder IN LISTS arg_SOURCES)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE ${arg_LINKS})
        return()
    endif()
    add_library(${name} OBJECT ${sources})
    target_compile_definitions(${name} PRIVATE TESSEL_BUILDING)
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/include)
    foreach(folder IN LISTS arg_INCLUDES)
        target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/${folder})
    endforeach()
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE tessel_flags)
endfunction()

# tessel_test(NAME SOURCES file... LINKS target...): a GoogleTest program whose cases CTest runs one by one.
function(tessel_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE TESSEL_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE ${arg_LINKS} tessel_flags GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS ${name})
endfunction()
