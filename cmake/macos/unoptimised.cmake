# For builds that are only to show that everything compiles and links.
add_compile_options(-O0)
