# Warnings for every target of the project; BRD_WERROR turns them into errors (the CI
# builds do, users' builds do not, so a newer compiler's new warning cannot break them).
option(BRD_WERROR "treat compiler warnings as errors" OFF)
add_compile_options(-Wall -Wextra -Wno-unused-parameter)
if(BRD_WERROR)
  add_compile_options(-Werror)
endif()
