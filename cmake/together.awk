# together.awk SOURCE...: prints groups of up to eight sources that can be compiled as one, a line each.
#
# No name may come to mean something else without an error.  So sources share a group only where no name that one declares
# outside of functions occurs anywhere in another, where the namespaces and directives that lines begin with are the same, and in
# the same first folder, as headers of two need not go together.  A processor's kernels, under its condition, are with each other
# only: intrinsics may change what other loops can be compiled for.  Macros, other conditions, operators, unscoped enumerations and
# what is extern "C" keep a source alone.
BEGIN {
  for (i = 1; i < ARGC; ++i) {
    read(i)
    place(i)
  }
  for (g = 0; g < groups; ++g) {
    if (count[g] == 1) continue
    for (k = 1; k <= count[g]; ++k) printf "%s ", ARGV[member[g, k]]
    print ""
  }
}

function read(i,    line, words, n, k, status) {
  split(ARGV[i], words, "/")
  directives[i] = words[1] "\n"
  while ((status = getline line < ARGV[i]) > 0) {
    if (line ~ /^#if defined\(BISEAM_(X86_64|ARM)\)( && defined\(__aarch64__\))?$/) directives[i] = directives[i] "kernels\n"
    if (line ~ /^#(include|endif|if defined\(BISEAM_(X86_64|ARM)\)( && defined\(__aarch64__\))?$)/) continue
    sub(/\/\/.*/, "", line)
    sub(/^\[\[[a-z_:]*\]\] /, "", line)
    if (line ~ /^#|^enum [A-Za-z_]* *[:{]|^enum *\{|^extern|^[A-Za-z].*operator/) alone[i] = 1
    else if (line ~ /^namespace [a-z:_]+ \{|^using namespace/) directives[i] = directives[i] line "\n"
    else if (line ~ /^[A-Za-z]/ && line !~ /^(TEST|INSTANTIATE|namespace \{|template$)/) declare(i, line)
    n = split(line, words, /[^A-Za-z_0-9]+/)
    for (k = 1; k <= n; ++k) used[i, words[k]] = 1
  }
  if (status < 0) {
    print ARGV[i] " can't be read" >"/dev/stderr"
    exit 1
  }
  close(ARGV[i])
}

# The last name before the first of = ( { [ ; : and those after commas.  What isn't a name of its own only keeps sources apart.
function declare(i, line,    rest) {
  gsub(/::/, "\001", line)
  while (gsub(/<[^<>]*>/, "", line)) continue
  sub(/ final /, " ", line)
  rest = line
  sub(/[=({[;:].*/, "", line)
  gsub(/\001/, " ", line)
  sub(/ *$/, "", line)
  if (match(line, /[A-Za-z_0-9]+$/) && line != "template") own(i, substr(line, RSTART, RLENGTH))
  while (match(rest, /, *[A-Za-z_0-9]+ *[=;{[(]/)) {
    own(i, substr(rest, RSTART + 1, RLENGTH - 2))
    rest = substr(rest, RSTART + RLENGTH - 1)
  }
}

function own(i, name) {
  gsub(/ /, "", name)
  names[i, ++owned[i]] = name
}

function place(i,    g) {
  for (g = 0; g < groups && !fits(i, g); ++g) continue
  if (g == groups) ++groups
  member[g, ++count[g]] = i
}

function fits(i, g,    k, other) {
  if (count[g] == 8 || alone[i] || alone[member[g, 1]] || directives[i] != directives[member[g, 1]]) return 0
  for (k = 1; k <= count[g]; ++k) {
    other = member[g, k]
    if (occurs(i, other) || occurs(other, i)) return 0
  }
  return 1
}

function occurs(i, other,    k) {
  for (k = 1; k <= owned[i]; ++k) {
    if ((other, names[i, k]) in used) return 1
  }
  return 0
}
