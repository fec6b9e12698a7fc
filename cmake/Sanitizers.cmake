# VL_SANITIZE names what -fsanitize gets, for everything in the build: a sanitizer that sees only half of a
# process reports nonsense.
if(VL_SANITIZE)
  add_compile_options(-fsanitize=${VL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VL_SANITIZE})
endif()
