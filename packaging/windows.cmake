# Run by cpack on a finished package: the archive for Windows begins with the page that says how to
# start. Others have no such page at their top.
set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
if(NOT CPACK_GENERATOR STREQUAL ZIP OR NOT EXISTS ${tree}/README.txt)
  return()
endif()
get_filename_component(top ${tree} NAME)
file(GLOB names RELATIVE ${tree}/.. ${tree}/*)
list(SORT names)
list(REMOVE_ITEM names ${top}/README.txt)
execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${CPACK_PACKAGE_FILES} --format=zip
                        ${top}/README.txt ${names}
                WORKING_DIRECTORY ${tree}/.. COMMAND_ERROR_IS_FATAL ANY)
