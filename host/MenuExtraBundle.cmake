# kib_menu_extra_bundle(<target> BUNDLE <Name.menuextra> OUTPUT_NAME <name> INFO <Info.json>
#                       [RESOURCES <folder>] SOURCES <files...> [LIBRARIES <libs...>])
#
# Builds a menu-extra plug-in bundle in <build>/bundles/<Name.menuextra>:
# Info.json, the shared library <name>.so and a copy of the resources folder.
# The platform library is linked dynamically, so the bundle and the program
# that loads it share one run loop, one clock and one set of centres.
function(kib_menu_extra_bundle target)
  cmake_parse_arguments(arg "" "BUNDLE;OUTPUT_NAME;INFO;RESOURCES" "SOURCES;LIBRARIES" ${ARGN})
  set(dir ${CMAKE_BINARY_DIR}/bundles/${arg_BUNDLE})
  add_library(${target} MODULE ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} kibplatform)
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${arg_OUTPUT_NAME}
                                             LIBRARY_OUTPUT_DIRECTORY ${dir})
  # A symbol the bundle needs and nobody defines is a link error, not a failure at load time.
  if(NOT KIB_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()

  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.layout.stamp)
  set(commands COMMAND ${CMAKE_COMMAND} -E make_directory ${dir}
               COMMAND ${CMAKE_COMMAND} -E copy_if_different ${arg_INFO} ${dir}/Info.json)
  set(depends ${arg_INFO})
  if(arg_RESOURCES)
    file(GLOB_RECURSE resource_files CONFIGURE_DEPENDS ${arg_RESOURCES}/*)
    list(APPEND depends ${resource_files})
    list(APPEND commands COMMAND ${CMAKE_COMMAND} -E rm -rf ${dir}/Resources
                         COMMAND ${CMAKE_COMMAND} -E copy_directory ${arg_RESOURCES} ${dir}/Resources)
  endif()
  add_custom_command(OUTPUT ${stamp} ${commands} COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
                     DEPENDS ${depends} COMMENT "Laying out ${arg_BUNDLE}" VERBATIM)
  add_custom_target(${target}Layout DEPENDS ${stamp})
  add_dependencies(${target} ${target}Layout)
endfunction()
