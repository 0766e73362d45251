# Flags that every target of the house shares, and the functions that make a layer and a test.

add_library(qo_flags INTERFACE)
target_compile_options(qo_flags INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
                                          -Wimplicit-fallthrough -Wunused)
# A class of a source that is read as part of a batch looks to GCC like one of a header.
if(QO_UNITY)
  target_compile_options(qo_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(QO_WERROR)
  target_compile_options(qo_flags INTERFACE -Werror)
endif()
if(QO_SANITIZE)
  add_compile_options(-fsanitize=${QO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QO_SANITIZE})
endif()

if(QO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

# qo_layer(NAME FOLDER... [LINK library...]): one object library from every source of the folders.
function(qo_layer NAME)
  cmake_parse_arguments(ARG "" "" "LINK;FOLDERS" ${ARGN})
  set(sources)
  foreach(folder IN LISTS ARG_FOLDERS)
    file(GLOB found CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  add_library(${NAME} OBJECT ${sources})
  target_include_directories(${NAME} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${NAME} PRIVATE qo_flags PUBLIC Boost::headers ${ARG_LINK})
endfunction()

# qo_test(FOLDER [library...]): one binary from tests/FOLDER and the folders in it, each of its tests known to
# CTest as "FOLDER/Suite.Name".
function(qo_test FOLDER)
  string(REPLACE "/" "_" name test_${FOLDER})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${FOLDER}/*Test.cpp
       ${CMAKE_CURRENT_SOURCE_DIR}/${FOLDER}/*/*Test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARGN} qo_test_support)
  gtest_discover_tests(${name} TEST_PREFIX "${FOLDER}/" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
