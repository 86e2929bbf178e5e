# The user's guide as HTML, one page with its pictures beside it: the target `guide`. Made where there is a cmark-gfm; a
# build without it installs the guide only as it was written.
if(CMAKE_SCRIPT_MODE_FILE)
    execute_process(COMMAND ${CMARK_GFM} --extension table ${SOURCE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${HEAD} head)
    file(WRITE ${HTML} "${head}${body}")
    return()
endif()

add_custom_target(guide)
find_program(CMARK_GFM cmark-gfm)
if(CMARK_GFM)
    set(guide_source ${PROJECT_SOURCE_DIR}/docs/ru/guide.md)
    set(guide_head ${PROJECT_SOURCE_DIR}/docs/ru/guide.head.html)
    set(GUIDE_HTML ${PROJECT_BINARY_DIR}/guide.html)
    add_custom_command(OUTPUT ${GUIDE_HTML}
        COMMAND ${CMAKE_COMMAND} -D CMARK_GFM=${CMARK_GFM} -D SOURCE=${guide_source} -D HEAD=${guide_head}
            -D HTML=${GUIDE_HTML} -P ${CMAKE_CURRENT_LIST_FILE}
        DEPENDS ${guide_source} ${guide_head} ${CMAKE_CURRENT_LIST_FILE}
        VERBATIM)
    add_custom_target(guide_html ALL DEPENDS ${GUIDE_HTML})
    add_dependencies(guide guide_html)
endif()
