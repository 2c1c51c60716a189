# What is given away: hardened, since it reads text of strangers, and the same bytes from any folder.
set(release $<CONFIG:Release>)
add_compile_options(
  "$<${release}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>"
  "$<${release}:-fstack-protector-strong>"
  "$<${release}:-D_FORTIFY_SOURCE=2>")
add_link_options("$<${release}:LINKER:-z,relro,-z,now>")
