# Installs BUILD below WORK, then builds, links and runs the small host in HOST against what was
# installed: once by the CMake package, once by the pkg-config file.
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)
set(ENV{HOME} ${WORK}/home)
foreach(name IN ITEMS DATA STATE CACHE CONFIG)
  set(ENV{XDG_${name}_HOME} ${WORK}/home/${name})
endforeach()
if(SANITIZE)
  set(flags -fsanitize=${SANITIZE})
endif()

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Runs a host in a folder of its own; it says one line for each family of headers.
function(expect_families how)
  file(MAKE_DIRECTORY ${WORK}/data-${how})
  run("the host of ${how}" ${ARGN} ${WORK}/data-${how})
  set(expected [[
Grüße from the kernel, 1
tags: 0 0
records: 1 1 1 1, cut 7
streams: 1, to 8
a quote in a pattern: 1
collection: 1, 1 change, 0 artists
trees: C:\a.txt c.mp3 d web Radio
rules: By artist, 1 node, Someone
]])
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the host of ${how} says:\n${output}")
  endif()
endfunction()

run("installing" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

foreach(page IN ITEMS man/man1/qo.1 man/man5/qo-rules.5 bash-completion/completions/qo zsh/vendor-completions/_qo
             fish/vendor_completions.d/qo.fish)
  file(SIZE ${prefix}/share/${page} size)
  if(size EQUAL 0)
    message(FATAL_ERROR "share/${page} is empty")
  endif()
endforeach()

run("configuring by find_package" ${CMAKE_COMMAND} -S ${HOST} -B ${WORK}/package -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${flags})
run("building by find_package" ${CMAKE_COMMAND} --build ${WORK}/package)
expect_families(find_package ${WORK}/package/host)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run("pkg-config" pkg-config --cflags --libs QoKernel)
string(STRIP "${output}" output)
separate_arguments(words UNIX_COMMAND "${output}")
run("building by pkg-config" ${CXX} ${flags} ${HOST}/Host.cpp -o ${WORK}/host ${words})
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
expect_families(pkg-config ${WORK}/host)

# Each public header stands alone, and what is the house's own is not there.
file(GLOB headers ${prefix}/include/QoKernel/*.h)
foreach(header IN LISTS headers)
  run("compiling ${header}" ${CXX} ${words} -fsyntax-only -x c++ ${header})
endforeach()
foreach(own IN ITEMS Inside.h Database/src/DbFacade/SQLiteDB.h platform/FileReplacement.h)
  if(EXISTS ${prefix}/include/QoKernel/${own})
    message(FATAL_ERROR "${own} is installed")
  endif()
endforeach()
