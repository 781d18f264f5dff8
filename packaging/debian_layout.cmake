# Run by CPack on the tree that it packs: what Debian wants otherwise than `cmake --install`.

cmake_minimum_required(VERSION 3.25)
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)

file(COPY ${CPACK_VANTOR_DOCUMENTS} DESTINATION ${root}/doc/vantor
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(COPY ${CPACK_VANTOR_OVERRIDES} DESTINATION ${root}/lintian/overrides
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(RENAME ${root}/lintian/overrides/lintian-overrides ${root}/lintian/overrides/vantor)
# Debian's zsh reads packages' completions from a folder of its own.
file(MAKE_DIRECTORY ${root}/zsh/vendor-completions)
file(GLOB completions ${root}/zsh/site-functions/*)
foreach(completion IN LISTS completions)
    cmake_path(GET completion FILENAME name)
    file(RENAME ${completion} ${root}/zsh/vendor-completions/${name})
endforeach()
file(REMOVE_RECURSE ${root}/zsh/site-functions)

file(GLOB manuals ${root}/man/*/*.[1-8])
execute_process(COMMAND gzip -9n ${manuals} ${root}/doc/vantor/changelog
    COMMAND_ERROR_IS_FATAL ANY)
