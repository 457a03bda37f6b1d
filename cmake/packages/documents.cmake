# Run by cpack before it closes Debian's packages: each holds the copyright and the lists of changes
# under its own name, and what they and the manual pages say is compressed.
set(names runtime libkelsave0 development libkelsave-dev kelcalc kelcalc documentation kelsave-doc)
while(names)
  list(POP_FRONT names component name)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${name})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${folder}/copyright COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog ${folder}/changelog.Debian COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md ${folder}/changelog COPYONLY)
  file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${folder}/changelog.Debian ${folder}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
endwhile()
