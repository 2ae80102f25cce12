# The network profile: change settings, see them masked, and every kind of refusal.
np() { veltra netprofile "$@" --file p.dat; }
t np show
t np set address 192.168.1.20
t np set address 127.0.0.1
t np set mask 255.0.255.0
t np set dns2 10.0.0.1
t np set dns1 10.0.0.1
t np set dhcp perhaps
t np set wifi yes
t np set ssid "Site office"
t np set security WPA-WPA2-Enterprise
t np set security WPA3
t np set passphrase "on the command line"
printf 'correct horse battery\n' > secret.txt
input=secret.txt t np set passphrase
t np set user
# The profile is read when the secret is there: what was set while it was asked for stays.
meanwhile() { (while [[ ! -e p.set ]]; do sleep 0.01; done; echo secret) | np set user; }
(sleep 0.2; np set ssid "Site kitchen"; touch p.set) &
t meanwhile
wait
t np set certificate x
t np set colour blue
t np set address
input=secret.txt t np set wep-key1
t np show -f jsonl
t np show --reveal -f jsonl
t np check
sed -i 's/192.168.1.20/300.1.1.1/; s/"Auto"/"auto"/; s/"Wireless Password" : "./&!/' p.dat
t np check
t np check -f jsonl
cp "$data/cli/wrong_profile.json" p.dat
t np check
echo '[' > p.dat
t np set wifi no
# Why a profile is not read: each its own line. What the reader passes over is found by check.
mkfifo fifo && mkdir folder && head -c 5M /dev/zero > large
for file in fifo folder large; do t veltra netprofile show --file $file; done
printf '{ "Mask": "255.0.0.0",\n "Use DHCP": true, "Use\\u0020DHCP": false, "Mask": "", "WiFi SSID": "caf\xe9",
 "Wireless Security": {"Key": [{"hush": 1, "hush": 2}], "Certificate Name": "a\0b" /* "Mask": */} }\n\0junk\n' > p.dat
t np check
for text in '"x"' null '{"a": 1,}' '\xef\xbb\xbf{}'; do
  printf "$text" > p.dat && t np check
done
echo "{$(printf '"a":1,%.0s' {1..30})\"b\":1}" > p.dat && np check | tail -n 1
echo '[]' > p.dat
t np check
# A profile named "-" is a file, too.
cp p.dat ./- && t veltra netprofile check --file -
