# cvt2_add_plugin(NAME SOURCE...): the plug-in NAME, libcvt_plug_NAME.so, built on the plug-in kit. Only its
# initialiser NAMEInit is exported.
function(cvt2_add_plugin name)
  set(target cvt_plug_${name})
  add_library(${target} MODULE ${ARGN})
  target_link_libraries(${target} PRIVATE cvt_kit cvt2_warnings)
  target_link_options(${target} PRIVATE -Wl,-z,defs -Wl,--exclude-libs,ALL)
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/cvt2)
endfunction()
