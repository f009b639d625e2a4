# The package's loader, each time in an interpreter of its own: it loads what fits, and says in one
# sentence what does not.

require "fileutils"
require "minitest"
require "rbconfig"
require "tmpdir"

class LoaderTest < Minitest::Test
  PACKAGE = ENV.fetch("PACKAGE_DIR")

  def setup
    @folder = Dir.mktmpdir("quellix-loader")
    FileUtils.cp(File.join(PACKAGE, "quellix.rb"), @folder)
    FileUtils.cp(File.join(ENV.fetch("EXTENSION_DIR"), "Quellix.so"), @folder)
  end

  def teardown = FileUtils.rm_rf(@folder)

  # What the interpreter prints after `before` has run and the loader was required.
  def run_loader(before = "", environment = {})
    script = File.join(@folder, "run.rb")
    File.write(script, <<~RUBY)
      #{before}
      begin
        require "#{@folder}/quellix"
        puts Quellix_SUInterface::SU_VERSION
      rescue LoadError => e
        puts e.message
      end
    RUBY
    # Into a file: under Wine a pipe's end is not always seen.
    said = File.join(@folder, "said.txt")
    done = system(environment, RbConfig.ruby, script, out: said, err: %i[child out])
    output = File.read(said)
    assert done, output
    output.delete("\r").chomp
  end

  def assert_refused(pattern, *arguments)
    said = run_loader(*arguments)
    assert_match pattern, said
    assert_equal 1, said.lines.size, "one sentence"
  end

  def test_loads_where_everything_fits
    assert_equal "2027", run_loader
  end

  def test_another_ruby_is_named
    assert_refused(/is for Ruby 3\.4, and this Ruby is 3\.2\.2\.\z/,
                   'Object.send(:remove_const, :RUBY_VERSION); RUBY_VERSION = "3.2.2"')
    assert_refused(/linked for \S+\.dll, and this Ruby is other-ruby340\.dll:/,
                   'require "rbconfig"; RbConfig::CONFIG["RUBY_SO_NAME"] = "other-ruby340"')
    assert_refused(/is for Windows x64, and this Ruby is for arm64-darwin\.\z/,
                   'Object.send(:remove_const, :RUBY_PLATFORM); RUBY_PLATFORM = "arm64-darwin"')
  end

  def test_a_missing_dll_is_named
    system_only = ENV.fetch("PATH").split(";").grep(/\Ac:/i).join(";")
    assert_refused(/needs SketchUpAPI\.dll and \S+\.dll, and one of them is not/, "", { "PATH" => system_only, "WINEPATH" => nil })
  end

  def test_a_damaged_or_missing_library_is_named
    File.binwrite(File.join(@folder, "Quellix.so"), "no library")
    assert_refused(/Quellix\.so is damaged/)
    File.delete(File.join(@folder, "Quellix.so"))
    assert_refused(/Quellix\.so is missing\.\z/)
  end
end

require "minitest/autorun"
