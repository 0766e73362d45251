# Installs the public headers, and of src/ those headers alone that they lead to. Inside.h stays at home.
#   SOURCE the repository, DESTINATION the folder below the prefix
cmake_policy(VERSION 3.25)

# Appends to a list the headers that a file names and that stand in src/, and so on.
function(collect file list)
  file(STRINGS ${file} lines REGEX "^ *# *include *\"")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*\"(.*)\".*" "\\1" name "${line}")
    if(NOT name IN_LIST ${list})
      list(APPEND ${list} ${name})
      collect(${SOURCE}/src/${name} ${list})
    endif()
  endforeach()
  set(${list} ${${list}} PARENT_SCOPE)
endfunction()

file(GLOB faces ${SOURCE}/include/QoKernel/*.h)
list(FILTER faces EXCLUDE REGEX "/Inside\\.h$")
set(headers)
foreach(face IN LISTS faces)
  collect(${face} headers)
endforeach()

set(target ${CMAKE_INSTALL_PREFIX}/${DESTINATION}/QoKernel)
file(INSTALL DESTINATION ${target} TYPE FILE FILES ${faces})
foreach(header IN LISTS headers)
  get_filename_component(folder ${header} DIRECTORY)
  file(INSTALL DESTINATION ${target}/${folder} TYPE FILE FILES ${SOURCE}/src/${header})
endforeach()
