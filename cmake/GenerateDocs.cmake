# Writes the manual page and the shell completions by asking the velmora just built, so they
# describe exactly its options. Run as: cmake -DVELMORA=... -DOUTPUT=... -P GenerateDocs.cmake
# The data folder points into the build tree: generating documentation never touches the
# builder's own velmora data.
set(ENV{VELMORA_DATA_DIR} ${OUTPUT}/data)
file(MAKE_DIRECTORY ${OUTPUT}/man ${OUTPUT}/completions)
foreach(job "man;man/velmora.1" "completion;bash;completions/velmora.bash" "completion;zsh;completions/_velmora"
            "completion;fish;completions/velmora.fish")
  list(POP_BACK job file)
  execute_process(COMMAND ${VELMORA} ${job} OUTPUT_FILE ${OUTPUT}/${file}.new RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "velmora ${job} failed (${status})")
  endif()
  file(RENAME ${OUTPUT}/${file}.new ${OUTPUT}/${file})
endforeach()
