# An option that also shows up in the feature summary at the end of configuring.
macro(dorvane_option name description default)
  option(${name} "${description}" ${default})
  add_feature_info(${name} ${name} "${description}")
endmacro()
