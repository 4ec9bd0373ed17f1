# cmake -DSOURCE=FOLDER -DOUTPUT=HEADER -P build_id.cmake: writes the id of the commit being built, if it has
# changed. Without a repository it takes the day from SOURCE_DATE_EPOCH, if set.
cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND git -C ${SOURCE} log -1 --abbrev=12 "--format=%h;%cs" OUTPUT_VARIABLE last_commit
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failure)
if(NOT failure)
  list(GET last_commit 0 commit)
  list(GET last_commit 1 day)
  set(build_id "commit ${commit} of ${day}")
elseif(DEFINED ENV{SOURCE_DATE_EPOCH})
  string(TIMESTAMP day "%Y-%m-%d" UTC)
  set(build_id "sources of ${day}")
else()
  set(build_id "of unknown sources")
endif()
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT "#pragma once

inline constexpr char kBuildId[] = \"@build_id@\";
")
