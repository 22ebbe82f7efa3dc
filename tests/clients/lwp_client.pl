# A client with LWP. Its arguments, input and output are described in client_program.py. LWP needs
# no setting, so "default" and "helped" are the same.
use strict;
use warnings;

use Digest::SHA qw(sha256_hex);
use LWP::UserAgent;
use POSIX ();

my ($certificate) = @ARGV;

sub send_requests {
    my ($number, $method, $url, @header) = @_;
    my $client = LWP::UserAgent->new(ssl_opts => { SSL_ca_file => $certificate });
    my $lines = '';
    for (1 .. $number) {
        my $reply = $client->request(HTTP::Request->new($method, $url, [@header]));
        if (($reply->header('Client-Warning') // '') eq 'Internal response') {
            my $error = $reply->status_line;
            $error =~ s/\s+/ /g;
            $lines .= "error $error\n";
        } else {
            $lines .= join(' ', $reply->code, length $reply->content, sha256_hex($reply->content))
                . "\n";
        }
    }
    syswrite STDOUT, $lines;
}

while (my $line = <STDIN>) {
    my ($method, $url, $count, $workers, @header) = split ' ', $line;
    if ($workers == 1) {
        send_requests($count, $method, $url, @header);
        next;
    }
    for (1 .. $workers) {
        my $process = fork;
        die "fork: $!" unless defined $process;
        if ($process == 0) {
            send_requests($count / $workers, $method, $url, @header);
            POSIX::_exit(0);
        }
    }
    1 while wait != -1;
}
