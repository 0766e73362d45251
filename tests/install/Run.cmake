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

function(expect_greeting how)
  if(NOT output STREQUAL "Grüße from the kernel, 42\n")
    message(FATAL_ERROR "the host that was built by ${how} says:\n${output}")
  endif()
endfunction()

run("installing" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

run("configuring by find_package" ${CMAKE_COMMAND} -S ${HOST} -B ${WORK}/package -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${flags})
run("building by find_package" ${CMAKE_COMMAND} --build ${WORK}/package)
run("the host of find_package" ${WORK}/package/host)
expect_greeting("find_package")

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run("pkg-config" pkg-config --cflags --libs QoKernel)
string(STRIP "${output}" output)
separate_arguments(words UNIX_COMMAND "${output}")
run("building by pkg-config" ${CXX} ${flags} ${HOST}/Host.cpp -o ${WORK}/host ${words})
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
run("the host of pkg-config" ${WORK}/host)
expect_greeting("pkg-config")

# Each public header stands alone.
file(GLOB headers ${prefix}/include/QoKernel/*.h)
foreach(header IN LISTS headers)
  run("compiling ${header}" ${CXX} ${words} -fsyntax-only -x c++ ${header})
endforeach()
