# Where a plug-in gets the model's handle from: the host's API in its own process.

require "minitest"
require "minitest/mock"

$LOAD_PATH.unshift(ENV.fetch("EXTENSION_DIR"), ENV.fetch("MODELHOST_DIR"), ENV.fetch("PLUGIN_DIR"))
require "sketchup.rb"
require "quellix_live"

class HandleTest < Minitest::Test
  HOST = QuellixLive::Host

  def setup
    Sketchup.file_new
    @model = Sketchup.active_model
  end

  def refusal(model = @model)
    message = assert_raises(QuellixLive::Error) { HOST.model_handle(model) }.message
    assert_match(/\A[a-z][^\n]*\z/, message, "one sentence")
    message
  end

  def test_the_active_model_is_asked_for_through_the_hosts_api
    assert_equal @model.handle, HOST.model_handle(@model)
    former = @model
    Sketchup.file_new
    other = Sketchup.active_model
    assert_equal other.handle, HOST.model_handle(other)
    assert_match(/is not the host's active one/, refusal(former))
    assert_match(/there is no model/, refusal(nil))
    assert_raises(RuntimeError) { ModelHost.active = former }
    ModelHost.active = nil
    assert_match(/gives no active model \(result 9\)/, Sketchup.stub(:active_model, other) { refusal(other) })
  ensure
    ModelHost.active = other
  end

  def test_what_is_missing_is_said
    no_fiddle = ->(name) { raise LoadError, "cannot load such file -- #{name}" }
    assert_match(/no Fiddle/, HOST.stub(:require, no_fiddle) { refusal })
    assert_match(/no_such_library.so, cannot be asked/, HOST.stub(:library, "no_such_library.so") { refusal })
  end

  def test_the_switches_of_a_live_link_are_set_before_the_extension_reads_them
    QuellixLive::Extension.load
    assert_equal "1", ENV.fetch("QUELLIX_MESH_PER_PAINT")
    assert_kind_of Class, Quellix_SUInterface
  end
end

require "minitest/autorun"
