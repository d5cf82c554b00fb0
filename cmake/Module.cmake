# kvn_module(NAME USES folders... LINKS public libraries... PRIVATE private libraries...)
# One folder of src/ as one static library. USES lists the folders below it that it may include;
# the same list stands in ARCHITECTURE.md, and a test compares the two with the #include lines.
function(kvn_module name)
    cmake_parse_arguments(arg "" "" "USES;LINKS;PRIVATE" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp
         ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    add_library(kvn_${name} STATIC ${sources})
    target_include_directories(kvn_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    list(TRANSFORM arg_USES PREPEND kvn_)
    target_link_libraries(kvn_${name} PUBLIC ${arg_USES} ${arg_LINKS} PRIVATE ${arg_PRIVATE})
    # moc costs time for every header it reads: the pixel code has no Qt class.
    if(NOT name STREQUAL "imaging")
        set_target_properties(kvn_${name} PROPERTIES AUTOMOC ON)
    endif()
endfunction()

# kvn_test(FILE LINKS targets...): one Qt Test program a file, run without a display.
function(kvn_test file)
    cmake_parse_arguments(arg "" "" "LINKS" ${ARGN})
    get_filename_component(stem ${file} NAME_WE)
    get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
    set(target test_${folder}_${stem})
    add_executable(${target} ${file})
    set_target_properties(${target} PROPERTIES AUTOMOC ON
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${target} PRIVATE ${arg_LINKS} Qt6::Test)
    add_test(NAME ${folder}.${stem} COMMAND ${target})
    set_tests_properties(${folder}.${stem} PROPERTIES TIMEOUT 300 ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;KVN_SOURCE_DIR=${CMAKE_SOURCE_DIR};KVN_BIN_DIR=${CMAKE_BINARY_DIR}/bin;LC_ALL=C.UTF-8;XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/run;XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/home/config;XDG_DATA_HOME=${CMAKE_BINARY_DIR}/home/data;XDG_CACHE_HOME=${CMAKE_BINARY_DIR}/home/cache")
endfunction()

# kvn_tests(LINKS targets...): every test file of this folder.
function(kvn_tests)
    file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    foreach(file ${files})
        kvn_test(${file} ${ARGN})
    endforeach()
endfunction()
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/run ${CMAKE_BINARY_DIR}/home)
file(CHMOD ${CMAKE_BINARY_DIR}/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
