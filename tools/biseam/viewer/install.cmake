# Fetches the viewer's packages into the current folder, exactly those of package-lock.json.
execute_process(COMMAND npm ci --ignore-scripts --no-audit --no-fund --loglevel=error RESULT_VARIABLE status OUTPUT_QUIET)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "npm could not install the packages of the viewer that `biseam view` shows (see above). "
    "Building it needs a package registry that npm reaches; -DBISEAM_BUILD_VIEWER=OFF builds the tool without it.")
endif()
