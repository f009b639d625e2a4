# Every Ruby file of the plug-in and of the stand-in host compiles without a warning, as `ruby -W -c` does it.

require "minitest"
require "tempfile"

class SyntaxTest < Minitest::Test
  FILES = [ENV.fetch("PLUGIN_DIR"), File.expand_path("../../platform/modelhost/ruby", __dir__), File.expand_path("../../examples", __dir__)]
          .flat_map { |folder| Dir.glob("#{folder}/**/*.rb") }

  def complaints(file)
    _, said = capture_io { RubyVM::InstructionSequence.compile_file(file) }
    said
  rescue SyntaxError => e
    e.message
  end

  def test_all_files_compile_without_a_warning
    assert_operator FILES.size, :>, 20, "the plug-in's files are not there"
    FILES.each { |file| assert_empty complaints(file), file }
  end

  def test_a_warning_and_an_error_are_seen
    { "def a = (b = 1; 2)\n" => /unused variable/, "def a(\n" => /syntax error/ }.each do |source, expected|
      Tempfile.create("sample") do |file|
        file.write(source)
        file.flush
        assert_match(expected, complaints(file.path))
      end
    end
  end
end

require "minitest/autorun"
