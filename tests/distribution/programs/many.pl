use strict;
use warnings;
my %sum;
$sum{$_ % 97} += $_ * $_ for 1 .. 30000;
print join(',', map { "$_=$sum{$_}" } (sort { $sum{$a} <=> $sum{$b} } keys %sum)[0 .. 9]), "\n";
(my $text = join ' ', 'a' .. 'zz') =~ s/(\w)(\w)(?= )/$2$1/g;
print length($text), ' ', unpack('%32C*', $text), "\n";
print "deep: ", (sub { my $f = shift; $f->($f, 2000) })->(sub { my ($f, $n) = @_; $n ? 1 + $f->($f, $n - 1) : 0 }), "\n";
eval { die { code => 7 } };
print "died with $@->{code}\n";
pipe my $reader, my $writer;
if (my $child = fork) {
  close $writer;
  print "child says: ", <$reader>;
  waitpid $child, 0;
  print "child ended with ", $? >> 8, "\n";
} else {
  print $writer "hello from a fork\n";
  close $writer;
  exit 6;
}
local $SIG{ALRM} = sub { print "alarm\n"; exit 4 };
alarm 1;
1 while 1;
