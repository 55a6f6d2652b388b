# cmake -D BUILD_DIR=… -D DPKG=… -D EXPECTED="velmora X.Y.Z" -P DebianPackageTest.cmake
execute_process(COMMAND mktemp -d OUTPUT_VARIABLE work OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

function(fail message)
  file(REMOVE_RECURSE ${work})
  message(FATAL_ERROR "${message}")
endfunction()

execute_process(COMMAND cpack -G DEB -B ${work}/out WORKING_DIRECTORY ${BUILD_DIR}
                RESULT_VARIABLE status OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT status EQUAL 0)
  fail("cpack failed: ${log}")
endif()
file(GLOB debs ${work}/out/*.deb)
list(LENGTH debs count)
if(NOT count EQUAL 1)
  fail("expected one .deb, found: ${debs}")
endif()

# The checksum file the update command reads: "<digest>  <name>".
get_filename_component(name ${debs} NAME)
file(SHA256 ${debs} digest)
file(READ ${debs}.sha256 published)
if(NOT published STREQUAL "${digest}  ${name}\n")
  fail("${name}.sha256 holds '${published}', expected '${digest}  ${name}'")
endif()

execute_process(COMMAND ${DPKG} -x ${debs} ${work}/root RESULT_VARIABLE status ERROR_VARIABLE log)
if(NOT status EQUAL 0)
  fail("dpkg -x failed: ${log}")
endif()
execute_process(COMMAND ${work}/root/usr/bin/velmora --version RESULT_VARIABLE status OUTPUT_VARIABLE version
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0 OR NOT version STREQUAL EXPECTED)
  fail("the unpacked velmora said '${version}' (status ${status})")
endif()
# The manual page and the completions travel with the binary, where man and the shells look.
foreach(installed share/man/man1/velmora.1 share/bash-completion/completions/velmora share/zsh/site-functions/_velmora
                  share/fish/vendor_completions.d/velmora.fish)
  if(NOT EXISTS ${work}/root/usr/${installed})
    fail("the package lacks /usr/${installed}")
  endif()
endforeach()
file(REMOVE_RECURSE ${work})
