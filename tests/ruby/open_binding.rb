# Signatures are compared in classes that end in a Ruby file; those of the binding are native.

require "modelhost"

ModelHost.constants.each do |name|
  eval("class ModelHost::#{name}; end", TOPLEVEL_BINDING) if ModelHost.const_get(name).is_a?(Class)
end

module ModelHost; end
