# vl_show(TARGET SYMBOL): the library shows the symbols of that pattern, under the layer's version, and nothing else:
# nothing of the standard library above all, which a host's own could stand in for.
function(vl_show target symbol)
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "${VL_LAYER_NODE} {\n    global:\n        ${symbol};\n    local:\n        *;\n};\n")
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()
