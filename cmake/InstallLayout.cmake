# The application's folder ("main bundle") and where the rest goes, relative to the prefix.
set(SR_BUNDLE_DIR lib/servicerecords)
set(SR_RESOURCES_DIR ${SR_BUNDLE_DIR}/Resources)
set(SR_UI_BUNDLE_DIR ${SR_BUNDLE_DIR}/PlugIns/ServiceRecordUI.bundle)
