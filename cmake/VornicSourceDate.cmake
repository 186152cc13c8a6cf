# When the source was written, so that what is built from it does not depend on when that is done:
# SOURCE_DATE_EPOCH from the environment (a standard of reproducible-builds.org), else the date that the
# archive of a commit carries, else that of the commit that is checked out, else now. Sets
#
#   VORNIC_SOURCE_EPOCH  seconds since 1970, UTC; also in the environment of the programs run here
#   VORNIC_SOURCE_DATE   as RFC 5322 writes it
#   VORNIC_SOURCE_DAY    YYYY-MM-DD

function(vornic_find_source_epoch result)
    if("$ENV{SOURCE_DATE_EPOCH}" MATCHES "^[0-9]+$")
        set(${result} "$ENV{SOURCE_DATE_EPOCH}" PARENT_SCOPE)
        return()
    endif()
    file(STRINGS "${PROJECT_SOURCE_DIR}/packaging/source-date" found LIMIT_COUNT 1)
    if(NOT found MATCHES "^[0-9]+$")
        execute_process(
            COMMAND git -c "safe.directory=${PROJECT_SOURCE_DIR}" log -1 --format=%ct
            WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
            OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
    if(NOT found MATCHES "^[0-9]+$")
        string(TIMESTAMP found "%s" UTC)
    endif()
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

vornic_find_source_epoch(VORNIC_SOURCE_EPOCH)
set(ENV{SOURCE_DATE_EPOCH} "${VORNIC_SOURCE_EPOCH}")
string(TIMESTAMP VORNIC_SOURCE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP VORNIC_SOURCE_DAY "%Y-%m-%d" UTC)
