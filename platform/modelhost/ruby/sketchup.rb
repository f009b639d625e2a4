# The host's own public names on the stand-in: `require "sketchup.rb"` and a plug-in runs as it is. The
# classes are those of "modelhost", so that what either gives the other takes. Without this file the
# binding is as before.

require "modelhost"

%w[lengths geom observers history recorded color entity definitions entities materials layers rendering_options
   shadow_info camera view pages model application ui extensions].each { |name| require_relative "host/#{name}" }
