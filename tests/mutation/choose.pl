#!/usr/bin/perl
# Chooses breaks: by turns one of each file and kind, in an order that the seed makes.
#
# usage: choose.pl SEED COUNT FUNCTION <ALL >CHOSEN     COUNT 0: all; FUNCTION '': of any
use strict;
use warnings;

my ($seed, $count, $function) = @ARGV;

# FNV-1a, 32 bits, stirred once more: what it gives for a text does not depend on the machine.
sub hash {
    my $hash = 2166136261;
    $hash = (($hash ^ ord) * 16777619) & 0xFFFFFFFF for split //, "$seed\n$_[0]";
    $hash ^= $hash >> 15;
    return ($hash * 2246822519 & 0xFFFFFFFF) ^ $hash >> 13;
}

my (@all, %in_group);
while (<STDIN>) {
    my ($file, undef, undef, $kind, $in) = split /\t/;
    push @all, {text => $_, hash => hash($_), group => "$file $kind"} if $function eq '' || $in eq $function;
}
for my $break (sort { $a->{hash} <=> $b->{hash} || $a->{text} cmp $b->{text} } @all) {
    $break->{turn} = $in_group{$break->{group}}++;
}
my @order = sort { $a->{turn} <=> $b->{turn} || $a->{hash} <=> $b->{hash} } @all;
splice @order, $count if $count && $count < @order;
print map { $_->{text} } @order;
