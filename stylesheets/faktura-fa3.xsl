<?xml version="1.0" encoding="UTF-8"?>
<!--
  An FA(3) invoice as a page for people, on screen and on A4 paper.

  XSLT 1.0 in one file, without extension functions, imports and document(), so that libxslt and MSXML 6 run it alike.
  Parameters, all of them optional: ksef_number, verification_link, qr_image (an address or a data: URI for the picture).

  The modes, each a table by element name:
    label   what a field is called
    value   how its text is written: amounts, quantities, accounts, codes as words
    field   both, on a line
    rest    what none of the sections shows. Each parent lists what its section takes; the remainder is printed at the end
            under "Pozostałe dane", so that nothing in a document is lost, whatever it holds.
  Flags that say no (P_16 = 2, P_19N and their like) are shown by silence, as on any printed invoice.

  Amounts are formatted as text: numbers are doubles in XSLT 1.0, and format-number() changes the last digits of the 18 that the
  schema allows. Only the sums that this sheet makes itself are numbers, and those are left out where a double might not do.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:f="http://crd.gov.pl/wzor/2025/06/25/13775/" exclude-result-prefixes="f">
  <xsl:output method="html" encoding="UTF-8" indent="no" doctype-system="about:legacy-compat"/>
  <xsl:param name="ksef_number"/>
  <xsl:param name="verification_link"/>
  <xsl:param name="qr_image"/>

  <xsl:key name="line_before" match="f:FaWiersz[f:StanPrzed]" use="f:NrWierszaFa"/>
  <xsl:key name="line_before" match="f:ZamowienieWiersz[f:StanPrzedZ]" use="concat('Z', f:NrWierszaZam)"/>
  <xsl:variable name="currency" select="/f:Faktura/f:Fa/f:KodWaluty"/>
  <xsl:variable name="kind" select="string(/f:Faktura/f:Fa/f:RodzajFaktury)"/>

  <!-- The page -->

  <xsl:template match="/">
    <xsl:variable name="rest"><xsl:apply-templates select="*" mode="rest"/></xsl:variable>
    <html lang="pl">
      <head>
        <meta name="viewport" content="width=device-width, initial-scale=1"/>
        <title>
          <xsl:choose>
            <xsl:when test="f:Faktura"><xsl:call-template name="heading"/><xsl:text> </xsl:text><xsl:value-of select="f:Faktura/f:Fa/f:P_2"/></xsl:when>
            <xsl:otherwise>Dokument XML</xsl:otherwise>
          </xsl:choose>
        </title>
        <xsl:call-template name="style"/>
      </head>
      <body>
        <main>
          <xsl:choose>
            <xsl:when test="f:Faktura"><xsl:apply-templates select="f:Faktura"/></xsl:when>
            <xsl:otherwise><h1>Dokument, który nie jest fakturą FA(3)</h1></xsl:otherwise>
          </xsl:choose>
          <xsl:if test="string($rest) != ''">
            <section class="rest">
              <h2>Pozostałe dane</h2>
              <table class="pairs"><tbody><xsl:copy-of select="$rest"/></tbody></table>
            </section>
          </xsl:if>
          <xsl:apply-templates select="f:Faktura/f:Naglowek"/>
        </main>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="f:Faktura">
    <div class="top">
      <div class="title">
        <h1><xsl:call-template name="heading"/></h1>
        <div class="number"><xsl:apply-templates select="f:Fa/f:P_2" mode="value"/></div>
        <xsl:apply-templates select="f:Fa/f:P_1 | f:Fa/f:P_1M | f:Fa/f:P_6 | f:Fa/f:OkresFa | f:Fa/f:WZ" mode="field"/>
        <xsl:apply-templates select="f:Fa/f:KodWaluty | f:Fa/f:KursWalutyZ" mode="field"/>
      </div>
      <xsl:if test="$ksef_number != '' or $verification_link != '' or $qr_image != ''">
        <div class="ksef">
          <xsl:if test="$qr_image != ''"><img src="{$qr_image}" alt="Kod QR do sprawdzenia faktury w KSeF"/></xsl:if>
          <div>
            <xsl:if test="$ksef_number != ''">
              <div><span class="label">Numer KSeF</span><b><xsl:value-of select="$ksef_number"/></b></div>
            </xsl:if>
            <xsl:if test="$verification_link != ''">
              <div><span class="label">Sprawdzenie faktury w KSeF</span>
                <xsl:choose>
                  <xsl:when test="starts-with($verification_link, 'https://')"><a href="{$verification_link}"><xsl:value-of select="$verification_link"/></a></xsl:when>
                  <xsl:otherwise><xsl:value-of select="$verification_link"/></xsl:otherwise>
                </xsl:choose>
              </div>
            </xsl:if>
          </div>
        </div>
      </xsl:if>
    </div>
    <div class="parties">
      <xsl:apply-templates select="f:Podmiot1 | f:Podmiot2 | f:Podmiot3 | f:PodmiotUpowazniony" mode="party"/>
    </div>
    <xsl:apply-templates select="f:Fa"/>
    <xsl:apply-templates select="f:Stopka"/>
    <xsl:apply-templates select="f:Zalacznik"/>
  </xsl:template>

  <xsl:template name="heading">
    <xsl:choose>
      <xsl:when test="$kind = 'VAT'">Faktura</xsl:when>
      <xsl:when test="$kind = 'KOR'">Faktura korygująca</xsl:when>
      <xsl:when test="$kind = 'ZAL'">Faktura zaliczkowa</xsl:when>
      <xsl:when test="$kind = 'ROZ'">Faktura rozliczeniowa</xsl:when>
      <xsl:when test="$kind = 'UPR'">Faktura uproszczona</xsl:when>
      <xsl:when test="$kind = 'KOR_ZAL'">Faktura korygująca fakturę zaliczkową</xsl:when>
      <xsl:when test="$kind = 'KOR_ROZ'">Faktura korygująca fakturę rozliczeniową</xsl:when>
      <xsl:otherwise>Faktura <xsl:value-of select="$kind"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="f:Naglowek">
    <p class="form">
      <xsl:apply-templates select="f:KodFormularza | f:WariantFormularza | f:DataWytworzeniaFa | f:SystemInfo" mode="inline"/>
    </p>
  </xsl:template>

  <!-- A heading and what stands below it, or neither. -->
  <xsl:template name="section">
    <xsl:param name="title"/>
    <xsl:param name="content"/>
    <xsl:if test="string($content) != ''">
      <section>
        <h2><xsl:value-of select="$title"/></h2>
        <xsl:copy-of select="$content"/>
      </section>
    </xsl:if>
  </xsl:template>

  <!-- Parties -->

  <xsl:template match="*" mode="party">
    <div class="party">
      <h2><xsl:apply-templates select="." mode="label"/></h2>
      <xsl:apply-templates select="f:Rola | f:OpisRoli | f:RolaPU" mode="field"/>
      <xsl:if test="f:RolaInna and not(f:OpisRoli)"><div>Inna rola</div></xsl:if>
      <xsl:apply-templates select="f:Udzial" mode="field"/>
      <xsl:apply-templates select="f:DaneIdentyfikacyjne"/>
      <xsl:apply-templates select="f:Adres"/>
      <xsl:apply-templates select="f:PrefiksPodatnika | f:NrEORI | f:NrKlienta | f:IDNabywcy" mode="field"/>
      <xsl:apply-templates select="f:AdresKoresp" mode="field"/>
      <xsl:apply-templates select="f:DaneKontaktowe/*[self::f:Email or self::f:Telefon or self::f:EmailPU or self::f:TelefonPU]" mode="field"/>
      <xsl:apply-templates select="f:StatusInfoPodatnika" mode="field"/>
      <xsl:apply-templates select="f:JST[. != '2'] | f:GV[. != '2']" mode="words"/>
    </div>
  </xsl:template>

  <xsl:template match="f:DaneIdentyfikacyjne">
    <xsl:for-each select="f:Nazwa"><div class="name"><xsl:value-of select="."/></div></xsl:for-each>
    <xsl:apply-templates select="f:NIP | f:IDWew" mode="field"/>
    <xsl:if test="f:KodUE or f:NrVatUE">
      <div><span class="label">NIP UE</span><xsl:value-of select="f:KodUE"/><xsl:text> </xsl:text><xsl:value-of select="f:NrVatUE"/></div>
    </xsl:if>
    <xsl:if test="f:KodKraju or f:NrID">
      <div><span class="label">Identyfikator podatkowy</span><xsl:value-of select="f:KodKraju"/><xsl:text> </xsl:text><xsl:value-of select="f:NrID"/></div>
    </xsl:if>
    <xsl:apply-templates select="f:BrakID" mode="words"/>
  </xsl:template>

  <xsl:template match="f:Adres | f:AdresPrzewoznika">
    <div class="address">
      <xsl:for-each select="f:AdresL1"><div><xsl:value-of select="."/></div></xsl:for-each>
      <div><xsl:value-of select="f:AdresL2"/><xsl:for-each select="f:KodKraju"> (<xsl:value-of select="."/>)</xsl:for-each></div>
      <xsl:apply-templates select="f:GLN" mode="field"/>
    </div>
  </xsl:template>

  <xsl:template mode="value" match="f:AdresKoresp | f:WysylkaZ | f:WysylkaPrzez | f:WysylkaDo">
    <xsl:value-of select="f:AdresL1"/>
    <xsl:for-each select="f:AdresL2">, <xsl:value-of select="."/></xsl:for-each>
    <xsl:for-each select="f:KodKraju"> (<xsl:value-of select="."/>)</xsl:for-each>
    <xsl:for-each select="f:GLN">, GLN <xsl:value-of select="."/></xsl:for-each>
  </xsl:template>

  <!-- The invoice itself -->

  <xsl:template match="f:Fa">
    <xsl:call-template name="correction"/>
    <xsl:if test="f:FaWiersz">
      <section>
        <h2>Pozycje</h2>
        <xsl:call-template name="lines"><xsl:with-param name="lines" select="f:FaWiersz"/></xsl:call-template>
      </section>
    </xsl:if>
    <xsl:for-each select="f:Zamowienie">
      <section>
        <h2>Zamówienie lub umowa</h2>
        <xsl:call-template name="lines"><xsl:with-param name="lines" select="f:ZamowienieWiersz"/></xsl:call-template>
        <xsl:apply-templates select="f:WartoscZamowienia" mode="sum"/>
      </section>
    </xsl:for-each>
    <xsl:call-template name="totals"/>
    <xsl:call-template name="advances"/>
    <xsl:apply-templates select="f:Rozliczenie"/>
    <xsl:apply-templates select="f:Platnosc"/>
    <xsl:call-template name="annotations"/>
    <xsl:if test="f:DodatkowyOpis">
      <section>
        <h2>Dodatkowe informacje</h2>
        <table class="pairs"><tbody>
          <xsl:for-each select="f:DodatkowyOpis">
            <tr>
              <th><xsl:value-of select="f:Klucz"/><xsl:for-each select="f:NrWiersza"> (pozycja <xsl:value-of select="."/>)</xsl:for-each></th>
              <td><xsl:value-of select="f:Wartosc"/></td>
            </tr>
          </xsl:for-each>
        </tbody></table>
      </section>
    </xsl:if>
    <xsl:apply-templates select="f:WarunkiTransakcji"/>
  </xsl:template>

  <xsl:template name="correction">
    <xsl:call-template name="section">
      <xsl:with-param name="title">Korekta</xsl:with-param>
      <xsl:with-param name="content">
        <xsl:apply-templates select="f:PrzyczynaKorekty | f:TypKorekty | f:OkresFaKorygowanej" mode="field"/>
        <xsl:if test="f:DaneFaKorygowanej">
          <table>
            <thead><tr><th>Faktura korygowana</th><th>Data wystawienia</th><th>Numer KSeF</th></tr></thead>
            <tbody>
              <xsl:for-each select="f:DaneFaKorygowanej">
                <tr>
                  <td data-label="Faktura korygowana"><xsl:value-of select="f:NrFaKorygowanej"/></td>
                  <td data-label="Data wystawienia"><xsl:value-of select="f:DataWystFaKorygowanej"/></td>
                  <td data-label="Numer KSeF">
                    <xsl:choose>
                      <xsl:when test="f:NrKSeFFaKorygowanej"><xsl:value-of select="f:NrKSeFFaKorygowanej"/></xsl:when>
                      <xsl:when test="f:NrKSeFN">wystawiona poza KSeF</xsl:when>
                      <xsl:when test="f:NrKSeF">nadany, nie podano</xsl:when>
                    </xsl:choose>
                  </td>
                </tr>
              </xsl:for-each>
            </tbody>
          </table>
        </xsl:if>
        <xsl:apply-templates select="f:NrFaKorygowany | f:P_15ZK | f:KursWalutyZK" mode="field"/>
        <xsl:if test="f:Podmiot1K or f:Podmiot2K">
          <div class="parties"><xsl:apply-templates select="f:Podmiot1K | f:Podmiot2K" mode="party"/></div>
        </xsl:if>
      </xsl:with-param>
    </xsl:call-template>
  </xsl:template>

  <!-- Lines of an invoice and of an order; the names of the latter end in Z. A column stands where any line fills it. -->

  <xsl:template name="lines">
    <xsl:param name="lines"/>
    <!-- Asked once for the table, not by each of perhaps 10 000 lines. -->
    <xsl:variable name="columns">
      <xsl:if test="$lines/f:P_8B | $lines/f:P_8BZ | $lines/f:P_8A | $lines/f:P_8AZ"> quantity </xsl:if>
      <xsl:if test="$lines/f:P_9A | $lines/f:P_9AZ"> net_price </xsl:if>
      <xsl:if test="$lines/f:P_9B"> gross_price </xsl:if>
      <xsl:if test="$lines/f:P_10"> discount </xsl:if>
      <xsl:if test="$lines/f:P_11 | $lines/f:P_11NettoZ"> net_value </xsl:if>
      <xsl:if test="$lines/f:P_12 | $lines/f:P_12Z | $lines/f:P_12_XII | $lines/f:P_12Z_XII"> rate </xsl:if>
      <xsl:if test="$lines/f:P_11Vat | $lines/f:P_11VatZ"> tax </xsl:if>
      <xsl:if test="$lines/f:P_11A"> gross_value </xsl:if>
    </xsl:variable>
    <table class="lines">
      <!-- Amounts do not wrap unless they are too long for a page that has many of them. -->
      <xsl:if test="$lines/*[starts-with(local-name(), 'P_9') or starts-with(local-name(), 'P_1')][string-length(.) &gt; 13]"><xsl:attribute name="class">lines long</xsl:attribute></xsl:if>
      <thead>
        <tr>
          <th>Lp.</th><th>Nazwa towaru lub usługi</th>
          <xsl:if test="contains($columns, ' quantity ')"><th class="n">Ilość</th></xsl:if>
          <xsl:if test="contains($columns, ' net_price ')"><th class="n">Cena netto</th></xsl:if>
          <xsl:if test="contains($columns, ' gross_price ')"><th class="n">Cena brutto</th></xsl:if>
          <xsl:if test="contains($columns, ' discount ')"><th class="n">Rabat</th></xsl:if>
          <xsl:if test="contains($columns, ' net_value ')"><th class="n">Wartość netto</th></xsl:if>
          <xsl:if test="contains($columns, ' rate ')"><th class="n">Stawka VAT</th></xsl:if>
          <xsl:if test="contains($columns, ' tax ')"><th class="n">Kwota VAT</th></xsl:if>
          <xsl:if test="contains($columns, ' gross_value ')"><th class="n">Wartość brutto</th></xsl:if>
        </tr>
      </thead>
      <tbody>
        <xsl:apply-templates select="$lines" mode="line"><xsl:with-param name="columns" select="string($columns)"/></xsl:apply-templates>
      </tbody>
    </table>
  </xsl:template>

  <xsl:template match="*" mode="line">
    <xsl:param name="columns"/>
    <tr>
      <xsl:if test="f:StanPrzed or f:StanPrzedZ"><xsl:attribute name="class">before</xsl:attribute></xsl:if>
      <td data-label="Lp."><xsl:value-of select="f:NrWierszaFa | f:NrWierszaZam"/></td>
      <td class="text">
        <xsl:choose>
          <xsl:when test="f:StanPrzed or f:StanPrzedZ"><div class="state">przed korektą</div></xsl:when>
          <xsl:when test="key('line_before', f:NrWierszaFa) or key('line_before', concat('Z', f:NrWierszaZam))"><div class="state">po korekcie</div></xsl:when>
        </xsl:choose>
        <xsl:for-each select="f:P_7 | f:P_7Z"><div><xsl:value-of select="."/></div></xsl:for-each>
        <div class="details">
          <xsl:apply-templates mode="inline" select="f:P_6A | f:Indeks | f:IndeksZ | f:GTIN | f:GTINZ | f:PKWiU | f:PKWiUZ | f:CN | f:CNZ | f:PKOB | f:PKOBZ | f:GTU | f:GTUZ
            | f:Procedura | f:ProceduraZ | f:KwotaAkcyzy | f:KwotaAkcyzyZ | f:KursWaluty | f:UU_ID | f:UU_IDZ"/>
          <xsl:if test="f:P_12_Zal_15 or f:P_12Z_Zal_15"><span class="inline">towar lub usługa z załącznika nr 15 do ustawy</span></xsl:if>
        </div>
      </td>
      <xsl:if test="contains($columns, ' quantity ')">
        <td class="n" data-label="Ilość">
          <xsl:apply-templates select="f:P_8B | f:P_8BZ" mode="value"/>
          <xsl:for-each select="f:P_8A | f:P_8AZ"><xsl:text> </xsl:text><xsl:value-of select="."/></xsl:for-each>
        </td>
      </xsl:if>
      <xsl:if test="contains($columns, ' net_price ')"><td class="n" data-label="Cena netto"><xsl:apply-templates select="f:P_9A | f:P_9AZ" mode="value"/></td></xsl:if>
      <xsl:if test="contains($columns, ' gross_price ')"><td class="n" data-label="Cena brutto"><xsl:apply-templates select="f:P_9B" mode="value"/></td></xsl:if>
      <xsl:if test="contains($columns, ' discount ')"><td class="n" data-label="Rabat"><xsl:apply-templates select="f:P_10" mode="value"/></td></xsl:if>
      <xsl:if test="contains($columns, ' net_value ')"><td class="n" data-label="Wartość netto"><xsl:apply-templates select="f:P_11 | f:P_11NettoZ" mode="value"/></td></xsl:if>
      <xsl:if test="contains($columns, ' rate ')">
        <td class="n" data-label="Stawka VAT">
          <xsl:apply-templates select="f:P_12 | f:P_12Z" mode="value"/>
          <xsl:if test="(f:P_12 or f:P_12Z) and (f:P_12_XII or f:P_12Z_XII)"><br/></xsl:if>
          <xsl:apply-templates select="f:P_12_XII | f:P_12Z_XII" mode="value"/>
        </td>
      </xsl:if>
      <xsl:if test="contains($columns, ' tax ')"><td class="n" data-label="Kwota VAT"><xsl:apply-templates select="f:P_11Vat | f:P_11VatZ" mode="value"/></td></xsl:if>
      <xsl:if test="contains($columns, ' gross_value ')"><td class="n" data-label="Wartość brutto"><xsl:apply-templates select="f:P_11A" mode="value"/></td></xsl:if>
    </tr>
  </xsl:template>

  <!-- Totals -->

  <xsl:template name="totals">
    <xsl:variable name="net" select="f:P_13_1 | f:P_13_2 | f:P_13_3 | f:P_13_4 | f:P_13_5 | f:P_13_6_1 | f:P_13_6_2 | f:P_13_6_3 | f:P_13_7 | f:P_13_8 | f:P_13_9 | f:P_13_10 | f:P_13_11"/>
    <xsl:variable name="tax" select="f:P_14_1 | f:P_14_2 | f:P_14_3 | f:P_14_4 | f:P_14_5"/>
    <xsl:variable name="tax_pln" select="f:P_14_1W | f:P_14_2W | f:P_14_3W | f:P_14_4W"/>
    <section class="totals">
      <xsl:if test="$net | $tax | $tax_pln">
        <h2>Podsumowanie według stawek</h2>
        <table>
          <thead>
            <tr><th>Stawka</th><th class="n">Netto</th><th class="n">VAT</th><th class="n">Brutto</th><xsl:if test="$tax_pln"><th class="n">VAT w PLN</th></xsl:if></tr>
          </thead>
          <tbody>
            <xsl:call-template name="rate"><xsl:with-param name="name"><xsl:call-template name="rates"><xsl:with-param name="one" select="'23'"/><xsl:with-param name="other" select="'22'"/></xsl:call-template></xsl:with-param>
              <xsl:with-param name="net" select="f:P_13_1"/><xsl:with-param name="tax" select="f:P_14_1"/><xsl:with-param name="pln" select="f:P_14_1W"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name"><xsl:call-template name="rates"><xsl:with-param name="one" select="'8'"/><xsl:with-param name="other" select="'7'"/></xsl:call-template></xsl:with-param>
              <xsl:with-param name="net" select="f:P_13_2"/><xsl:with-param name="tax" select="f:P_14_2"/><xsl:with-param name="pln" select="f:P_14_2W"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'5%'"/>
              <xsl:with-param name="net" select="f:P_13_3"/><xsl:with-param name="tax" select="f:P_14_3"/><xsl:with-param name="pln" select="f:P_14_3W"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'ryczałt dla taksówek'"/>
              <xsl:with-param name="net" select="f:P_13_4"/><xsl:with-param name="tax" select="f:P_14_4"/><xsl:with-param name="pln" select="f:P_14_4W"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'procedura szczególna (dział XII rozdział 6a)'"/>
              <xsl:with-param name="net" select="f:P_13_5"/><xsl:with-param name="tax" select="f:P_14_5"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'0% w kraju'"/><xsl:with-param name="net" select="f:P_13_6_1"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'0% WDT'"/><xsl:with-param name="net" select="f:P_13_6_2"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'0% eksport'"/><xsl:with-param name="net" select="f:P_13_6_3"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'zwolnione od podatku'"/><xsl:with-param name="net" select="f:P_13_7"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'np I: poza terytorium kraju'"/><xsl:with-param name="net" select="f:P_13_8"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'np II: usługi z art. 100 ust. 1 pkt 4'"/><xsl:with-param name="net" select="f:P_13_9"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'odwrotne obciążenie'"/><xsl:with-param name="net" select="f:P_13_10"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
            <xsl:call-template name="rate"><xsl:with-param name="name" select="'procedura marży'"/><xsl:with-param name="net" select="f:P_13_11"/><xsl:with-param name="with_pln" select="$tax_pln"/></xsl:call-template>
          </tbody>
          <xsl:variable name="total"><xsl:call-template name="sum"><xsl:with-param name="amounts" select="$net | $tax"/></xsl:call-template></xsl:variable>
          <xsl:if test="string($total) != ''">
            <tbody class="sum">
              <tr>
                <th>Razem</th>
                <td class="n" data-label="Netto"><xsl:call-template name="sum"><xsl:with-param name="amounts" select="$net"/></xsl:call-template></td>
                <td class="n" data-label="VAT"><xsl:call-template name="sum"><xsl:with-param name="amounts" select="$tax"/></xsl:call-template></td>
                <td class="n" data-label="Brutto"><xsl:value-of select="$total"/></td>
                <xsl:if test="$tax_pln"><td class="n" data-label="VAT w PLN"><xsl:call-template name="sum"><xsl:with-param name="amounts" select="$tax_pln"/></xsl:call-template></td></xsl:if>
              </tr>
            </tbody>
          </xsl:if>
        </table>
      </xsl:if>
      <xsl:apply-templates select="f:P_15" mode="sum"/>
    </section>
  </xsl:template>

  <!-- One field holds two rates, the present one and the one before; the lines tell which it was. -->
  <xsl:template name="rates">
    <xsl:param name="one"/>
    <xsl:param name="other"/>
    <xsl:variable name="used" select="f:FaWiersz/f:P_12 | f:Zamowienie/f:ZamowienieWiersz/f:P_12Z"/>
    <xsl:choose>
      <xsl:when test="$used = $one and not($used = $other)"><xsl:value-of select="$one"/>%</xsl:when>
      <xsl:when test="$used = $other and not($used = $one)"><xsl:value-of select="$other"/>%</xsl:when>
      <xsl:otherwise><xsl:value-of select="$one"/>% lub <xsl:value-of select="$other"/>%</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- Given amounts as they stand, and gross, which is a sum. -->
  <xsl:template name="rate">
    <xsl:param name="name"/>
    <xsl:param name="net" select="/.."/>
    <xsl:param name="tax" select="/.."/>
    <xsl:param name="pln" select="/.."/>
    <xsl:param name="with_pln"/>
    <xsl:if test="$net | $tax | $pln">
      <tr>
        <th><xsl:value-of select="$name"/></th>
        <td class="n" data-label="Netto"><xsl:apply-templates select="$net" mode="value"/></td>
        <td class="n" data-label="VAT"><xsl:apply-templates select="$tax" mode="value"/></td>
        <td class="n" data-label="Brutto"><xsl:call-template name="sum"><xsl:with-param name="amounts" select="$net | $tax"/></xsl:call-template></td>
        <xsl:if test="$with_pln"><td class="n" data-label="VAT w PLN"><xsl:apply-templates select="$pln" mode="value"/></td></xsl:if>
      </tr>
    </xsl:if>
  </xsl:template>

  <xsl:template name="sum">
    <xsl:param name="amounts"/>
    <!-- 15 digits are what a double surely holds: up to twelve before the point leave room for two behind and a carry. -->
    <xsl:if test="$amounts and not($amounts[string-length(substring-before(concat(., '.'), '.')) &gt; 12]) and string(sum($amounts)) != 'NaN'">
      <xsl:call-template name="number">
        <xsl:with-param name="text" select="format-number(sum($amounts), '0.00')"/>
        <xsl:with-param name="decimals" select="2"/>
      </xsl:call-template>
    </xsl:if>
  </xsl:template>

  <!-- The amounts that a reader looks for first. -->
  <xsl:template match="*" mode="sum">
    <p class="due">
      <span class="label"><xsl:apply-templates select="." mode="label"/></span>
      <b><xsl:apply-templates select="." mode="value"/><xsl:text>&#160;</xsl:text><xsl:value-of select="$currency"/></b>
    </p>
  </xsl:template>

  <xsl:template name="advances">
    <xsl:if test="f:ZaliczkaCzesciowa">
      <section>
        <h2>Otrzymane płatności</h2>
        <table>
          <thead><tr><th>Data otrzymania</th><th class="n">Kwota</th><th class="n">Kurs waluty</th></tr></thead>
          <tbody>
            <xsl:for-each select="f:ZaliczkaCzesciowa">
              <tr>
                <td data-label="Data otrzymania"><xsl:value-of select="f:P_6Z"/></td>
                <td class="n" data-label="Kwota"><xsl:apply-templates select="f:P_15Z" mode="value"/></td>
                <td class="n" data-label="Kurs waluty"><xsl:apply-templates select="f:KursWalutyZW" mode="value"/></td>
              </tr>
            </xsl:for-each>
          </tbody>
        </table>
      </section>
    </xsl:if>
    <xsl:if test="f:FakturaZaliczkowa">
      <section>
        <h2>Faktury zaliczkowe</h2>
        <ul>
          <xsl:for-each select="f:FakturaZaliczkowa">
            <li>
              <xsl:value-of select="f:NrFaZaliczkowej"/><xsl:text> </xsl:text><xsl:value-of select="f:NrKSeFFaZaliczkowej"/>
              <xsl:if test="f:NrKSeFZN"> (wystawiona poza KSeF)</xsl:if>
            </li>
          </xsl:for-each>
        </ul>
      </section>
    </xsl:if>
  </xsl:template>

  <xsl:template match="f:Rozliczenie">
    <section>
      <h2>Rozliczenie</h2>
      <table>
        <thead><tr><th>Obciążenia i odliczenia</th><th>Powód</th><th class="n">Kwota</th></tr></thead>
        <tbody>
          <xsl:for-each select="f:Obciazenia | f:Odliczenia">
            <tr>
              <td><xsl:apply-templates select="." mode="label"/></td>
              <td data-label="Powód"><xsl:value-of select="f:Powod"/></td>
              <td class="n" data-label="Kwota"><xsl:apply-templates select="f:Kwota" mode="value"/></td>
            </tr>
          </xsl:for-each>
        </tbody>
        <tbody class="sum">
          <xsl:for-each select="f:SumaObciazen | f:SumaOdliczen">
            <tr><th colspan="2"><xsl:apply-templates select="." mode="label"/></th><td class="n" data-label="Kwota"><xsl:apply-templates select="." mode="value"/></td></tr>
          </xsl:for-each>
        </tbody>
      </table>
      <xsl:apply-templates select="f:DoZaplaty | f:DoRozliczenia" mode="sum"/>
    </section>
  </xsl:template>

  <!-- Payment -->

  <xsl:template match="f:Platnosc">
    <section>
      <h2>Płatność</h2>
      <xsl:apply-templates select="f:Zaplacono | f:ZnacznikZaplatyCzesciowej" mode="words"/>
      <xsl:apply-templates select="f:DataZaplaty" mode="field"/>
      <xsl:apply-templates select="f:TerminPlatnosci[*]" mode="field"/>
      <xsl:call-template name="payment_form"/>
      <xsl:apply-templates select="f:RachunekBankowy | f:RachunekBankowyFaktora" mode="field"/>
      <xsl:for-each select="f:Skonto">
        <div><span class="label">Skonto</span><xsl:value-of select="f:WysokoscSkonta"/>, <xsl:value-of select="f:WarunkiSkonta"/></div>
      </xsl:for-each>
      <xsl:apply-templates select="f:LinkDoPlatnosci | f:IPKSeF" mode="field"/>
      <xsl:if test="f:ZaplataCzesciowa">
        <table>
          <thead><tr><th>Zapłata częściowa</th><th>Forma płatności</th><th class="n">Kwota</th></tr></thead>
          <tbody>
            <xsl:for-each select="f:ZaplataCzesciowa">
              <tr>
                <td data-label="Zapłata częściowa"><xsl:value-of select="f:DataZaplatyCzesciowej"/></td>
                <td data-label="Forma płatności"><xsl:call-template name="payment_words"/></td>
                <td class="n" data-label="Kwota"><xsl:apply-templates select="f:KwotaZaplatyCzesciowej" mode="value"/></td>
              </tr>
            </xsl:for-each>
          </tbody>
        </table>
      </xsl:if>
    </section>
  </xsl:template>

  <xsl:template name="payment_form">
    <xsl:if test="f:FormaPlatnosci or f:PlatnoscInna or f:OpisPlatnosci">
      <div><span class="label">Forma płatności</span><xsl:call-template name="payment_words"/></div>
    </xsl:if>
  </xsl:template>

  <xsl:template name="payment_words">
    <xsl:apply-templates select="f:FormaPlatnosci" mode="value"/>
    <xsl:if test="f:PlatnoscInna">inna<xsl:if test="f:OpisPlatnosci">: </xsl:if></xsl:if>
    <xsl:value-of select="f:OpisPlatnosci"/>
  </xsl:template>

  <xsl:template match="f:TerminPlatnosci" mode="value">
    <xsl:value-of select="f:Termin"/>
    <xsl:for-each select="f:TerminOpis">
      <xsl:if test="../f:Termin">, </xsl:if>
      <xsl:value-of select="f:Ilosc"/><xsl:text> </xsl:text><xsl:value-of select="f:Jednostka"/>, licząc od: <xsl:value-of select="f:ZdarzeniePoczatkowe"/>
    </xsl:for-each>
  </xsl:template>

  <xsl:template match="f:RachunekBankowy | f:RachunekBankowyFaktora" mode="value">
    <b><xsl:apply-templates select="f:NrRB" mode="value"/></b>
    <xsl:for-each select="f:NazwaBanku | f:OpisRachunku">, <xsl:value-of select="."/></xsl:for-each>
    <xsl:for-each select="f:SWIFT">, SWIFT <xsl:value-of select="."/></xsl:for-each>
    <xsl:for-each select="f:RachunekWlasnyBanku"><div class="details"><xsl:apply-templates select="." mode="value"/></div></xsl:for-each>
  </xsl:template>

  <!-- Annotations -->

  <xsl:template name="annotations">
    <xsl:call-template name="section">
      <xsl:with-param name="title">Adnotacje</xsl:with-param>
      <xsl:with-param name="content">
        <xsl:for-each select="f:Adnotacje">
          <xsl:apply-templates select="f:P_16[. != '2'] | f:P_17[. != '2'] | f:P_18[. != '2'] | f:P_18A[. != '2'] | f:P_23[. != '2']" mode="words"/>
          <xsl:for-each select="f:Zwolnienie">
            <xsl:apply-templates select="f:P_19" mode="words"/>
            <xsl:apply-templates select="f:P_19A | f:P_19B | f:P_19C" mode="field"/>
          </xsl:for-each>
          <!-- The general flag says no more than the one that follows it. -->
          <xsl:apply-templates select="f:PMarzy/*[self::f:P_PMarzy_2 or self::f:P_PMarzy_3_1 or self::f:P_PMarzy_3_2 or self::f:P_PMarzy_3_3]" mode="words"/>
          <xsl:if test="f:PMarzy/f:P_PMarzy and not(f:PMarzy/f:P_PMarzy_2 or f:PMarzy/f:P_PMarzy_3_1 or f:PMarzy/f:P_PMarzy_3_2 or f:PMarzy/f:P_PMarzy_3_3)"><div class="words">Procedura marży</div></xsl:if>
          <xsl:for-each select="f:NoweSrodkiTransportu">
            <xsl:apply-templates select="f:P_22 | f:P_42_5[. != '2']" mode="words"/>
            <xsl:for-each select="f:NowySrodekTransportu">
              <div class="block">
                <xsl:apply-templates mode="inline" select="f:P_NrWierszaNST | f:P_22A | f:P_22BMK | f:P_22BMD | f:P_22BK | f:P_22BNR | f:P_22BRP
                  | f:P_22B | f:P_22B1 | f:P_22B2 | f:P_22B3 | f:P_22B4 | f:P_22BT | f:P_22C | f:P_22C1 | f:P_22D | f:P_22D1"/>
              </div>
            </xsl:for-each>
          </xsl:for-each>
        </xsl:for-each>
        <xsl:apply-templates select="f:FP | f:TP | f:ZwrotAkcyzy" mode="words"/>
      </xsl:with-param>
    </xsl:call-template>
  </xsl:template>

  <!-- What a flag says when it is set. -->
  <xsl:template match="*" mode="words">
    <div class="words"><xsl:apply-templates select="." mode="label"/></div>
  </xsl:template>

  <xsl:template match="f:ZnacznikZaplatyCzesciowej" mode="words">
    <div class="words"><xsl:choose><xsl:when test=". = '1'">Zapłacono w części</xsl:when><xsl:when test=". = '2'">Zapłacono w całości, w częściach</xsl:when><xsl:otherwise><xsl:value-of select="."/></xsl:otherwise></xsl:choose></div>
  </xsl:template>

  <!-- Terms of the transaction -->

  <xsl:template match="f:WarunkiTransakcji">
    <section>
      <h2>Warunki transakcji</h2>
      <xsl:for-each select="f:Umowy[*]">
        <div><span class="label">Umowa</span><xsl:value-of select="f:NrUmowy"/><xsl:for-each select="f:DataUmowy"> z dnia <xsl:value-of select="."/></xsl:for-each></div>
      </xsl:for-each>
      <xsl:for-each select="f:Zamowienia[*]">
        <div><span class="label">Zamówienie</span><xsl:value-of select="f:NrZamowienia"/><xsl:for-each select="f:DataZamowienia"> z dnia <xsl:value-of select="."/></xsl:for-each></div>
      </xsl:for-each>
      <xsl:apply-templates select="f:NrPartiiTowaru | f:WarunkiDostawy | f:KursUmowny | f:WalutaUmowna" mode="field"/>
      <xsl:apply-templates select="f:PodmiotPosredniczacy" mode="words"/>
      <xsl:apply-templates select="f:Transport"/>
    </section>
  </xsl:template>

  <xsl:template match="f:Transport">
    <div class="block">
      <h3>Transport</h3>
      <xsl:apply-templates select="f:RodzajTransportu | f:OpisInnegoTransportu" mode="field"/>
      <xsl:if test="f:TransportInny and not(f:OpisInnegoTransportu)"><div>Inny rodzaj transportu</div></xsl:if>
      <xsl:for-each select="f:Przewoznik">
        <div><span class="label">Przewoźnik</span></div>
        <div class="inner"><xsl:apply-templates select="f:DaneIdentyfikacyjne | f:AdresPrzewoznika"/></div>
      </xsl:for-each>
      <xsl:apply-templates select="f:NrZleceniaTransportu | f:OpisLadunku | f:OpisInnegoLadunku" mode="field"/>
      <xsl:if test="f:LadunekInny and not(f:OpisInnegoLadunku)"><div>Inny ładunek</div></xsl:if>
      <xsl:apply-templates select="f:JednostkaOpakowania | f:DataGodzRozpTransportu | f:DataGodzZakTransportu | f:WysylkaZ | f:WysylkaPrzez | f:WysylkaDo" mode="field"/>
    </div>
  </xsl:template>

  <!-- The foot, and the attachment -->

  <xsl:template match="f:Stopka">
    <xsl:call-template name="section">
      <xsl:with-param name="title">Informacje</xsl:with-param>
      <xsl:with-param name="content">
        <xsl:for-each select="f:Informacje/f:StopkaFaktury"><p class="foot"><xsl:value-of select="."/></p></xsl:for-each>
        <xsl:for-each select="f:Rejestry[*]">
          <div><xsl:apply-templates select="f:PelnaNazwa | f:KRS | f:REGON | f:BDO" mode="inline"/></div>
        </xsl:for-each>
      </xsl:with-param>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="f:Zalacznik">
    <section class="attachment">
      <h2>Załącznik</h2>
      <xsl:for-each select="f:BlokDanych">
        <xsl:for-each select="f:ZNaglowek"><h3><xsl:value-of select="."/></h3></xsl:for-each>
        <xsl:if test="f:MetaDane">
          <table class="pairs"><tbody>
            <xsl:for-each select="f:MetaDane"><tr><th><xsl:value-of select="f:ZKlucz"/></th><td><xsl:value-of select="f:ZWartosc"/></td></tr></xsl:for-each>
          </tbody></table>
        </xsl:if>
        <xsl:for-each select="f:Tekst/f:Akapit"><p><xsl:value-of select="."/></p></xsl:for-each>
        <xsl:apply-templates select="f:Tabela"/>
      </xsl:for-each>
    </section>
  </xsl:template>

  <xsl:template match="f:Tabela">
    <xsl:for-each select="f:Opis"><p><b><xsl:value-of select="."/></b></p></xsl:for-each>
    <xsl:if test="f:TMetaDane">
      <table class="pairs"><tbody>
        <xsl:for-each select="f:TMetaDane"><tr><th><xsl:value-of select="f:TKlucz"/></th><td><xsl:value-of select="f:TWartosc"/></td></tr></xsl:for-each>
      </tbody></table>
    </xsl:if>
    <table>
      <thead>
        <tr><xsl:for-each select="f:TNaglowek/f:Kol"><th><xsl:call-template name="column_class"><xsl:with-param name="type" select="@Typ"/></xsl:call-template><xsl:value-of select="f:NKom"/></th></xsl:for-each></tr>
      </thead>
      <tbody><xsl:apply-templates select="f:Wiersz"/></tbody>
      <xsl:if test="f:Suma"><tbody class="sum"><xsl:apply-templates select="f:Suma"/></tbody></xsl:if>
    </table>
  </xsl:template>

  <xsl:template match="f:Wiersz | f:Suma">
    <xsl:variable name="columns" select="../f:TNaglowek/f:Kol"/>
    <tr>
      <xsl:for-each select="f:WKom | f:SKom">
        <xsl:variable name="position" select="position()"/>
        <td data-label="{$columns[$position]/f:NKom}">
          <xsl:call-template name="column_class"><xsl:with-param name="type" select="$columns[$position]/@Typ"/></xsl:call-template>
          <xsl:choose>
            <xsl:when test="$columns[$position]/@Typ = 'dec'"><xsl:call-template name="number"><xsl:with-param name="text" select="."/></xsl:call-template></xsl:when>
            <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
          </xsl:choose>
        </td>
      </xsl:for-each>
    </tr>
  </xsl:template>

  <xsl:template name="column_class">
    <xsl:param name="type"/>
    <xsl:if test="$type = 'dec' or $type = 'int'"><xsl:attribute name="class">n</xsl:attribute></xsl:if>
  </xsl:template>

  <!-- Fields -->

  <xsl:template match="*" mode="field">
    <div><span class="label"><xsl:apply-templates select="." mode="label"/></span><xsl:apply-templates select="." mode="value"/></div>
  </xsl:template>

  <xsl:template match="*" mode="inline">
    <span class="inline"><span class="label"><xsl:apply-templates select="." mode="label"/></span><xsl:apply-templates select="." mode="value"/></span>
    <xsl:text> </xsl:text>
  </xsl:template>

  <!-- Values -->

  <xsl:template match="*" mode="value"><xsl:value-of select="."/></xsl:template>

  <xsl:template mode="value" match="f:P_9A | f:P_9AZ | f:P_9B | f:P_10 | f:P_11 | f:P_11A | f:P_11Vat | f:P_11NettoZ | f:P_11VatZ | f:KwotaAkcyzy | f:KwotaAkcyzyZ
      | f:P_13_1 | f:P_13_2 | f:P_13_3 | f:P_13_4 | f:P_13_5 | f:P_13_6_1 | f:P_13_6_2 | f:P_13_6_3 | f:P_13_7 | f:P_13_8 | f:P_13_9 | f:P_13_10 | f:P_13_11
      | f:P_14_1 | f:P_14_2 | f:P_14_3 | f:P_14_4 | f:P_14_5 | f:P_14_1W | f:P_14_2W | f:P_14_3W | f:P_14_4W
      | f:P_15 | f:P_15Z | f:P_15ZK | f:Kwota | f:SumaObciazen | f:SumaOdliczen | f:DoZaplaty | f:DoRozliczenia | f:KwotaZaplatyCzesciowej | f:WartoscZamowienia">
    <xsl:call-template name="number"><xsl:with-param name="text" select="."/><xsl:with-param name="decimals" select="2"/></xsl:call-template>
  </xsl:template>

  <xsl:template mode="value" match="f:P_8B | f:P_8BZ | f:KursWaluty | f:KursWalutyZ | f:KursWalutyZK | f:KursWalutyZW | f:KursUmowny">
    <xsl:call-template name="number"><xsl:with-param name="text" select="."/></xsl:call-template>
  </xsl:template>

  <xsl:template mode="value" match="f:Udzial | f:P_12_XII | f:P_12Z_XII">
    <xsl:call-template name="number"><xsl:with-param name="text" select="."/></xsl:call-template>%</xsl:template>

  <xsl:template mode="value" match="f:P_12 | f:P_12Z">
    <xsl:choose>
      <xsl:when test="translate(., '0123456789', '') = ''"><xsl:value-of select="."/>%</xsl:when>
      <xsl:when test="starts-with(., '0 ')">0% <xsl:value-of select="substring-after(., ' ')"/></xsl:when>
      <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template mode="value" match="f:OkresFa"><xsl:value-of select="f:P_6_Od"/> – <xsl:value-of select="f:P_6_Do"/></xsl:template>

  <xsl:template mode="value" match="f:DataWytworzeniaFa | f:DataGodzRozpTransportu | f:DataGodzZakTransportu"><xsl:value-of select="translate(., 'T', ' ')"/></xsl:template>

  <xsl:template mode="value" match="f:KodFormularza">
    <xsl:value-of select="."/>
    <xsl:if test="@kodSystemowy != ''">, <xsl:value-of select="@kodSystemowy"/></xsl:if>
    <xsl:if test="@wersjaSchemy != ''">, wersja <xsl:value-of select="@wersjaSchemy"/></xsl:if>
  </xsl:template>

  <!-- 26 digits are two and six times four, anything else fours. -->
  <xsl:template mode="value" match="f:NrRB">
    <xsl:variable name="text" select="translate(., ' ', '')"/>
    <xsl:variable name="head" select="2 * number(string-length($text) = 26 and translate($text, '0123456789', '') = '')"/>
    <xsl:value-of select="substring($text, 1, $head)"/>
    <xsl:call-template name="fours"><xsl:with-param name="text" select="substring($text, $head + 1)"/><xsl:with-param name="gap" select="$head != 0"/></xsl:call-template>
  </xsl:template>

  <xsl:template name="fours">
    <xsl:param name="text"/>
    <xsl:param name="gap" select="true()"/>
    <xsl:if test="$text != ''">
      <xsl:if test="$gap"><xsl:text>&#160;</xsl:text></xsl:if>
      <xsl:value-of select="substring($text, 1, 4)"/>
      <xsl:call-template name="fours"><xsl:with-param name="text" select="substring($text, 5)"/></xsl:call-template>
    </xsl:if>
  </xsl:template>

  <!-- A decimal number the Polish way, with at least so many decimals; what is none stays as it is. -->
  <xsl:template name="number">
    <xsl:param name="text"/>
    <xsl:param name="decimals" select="0"/>
    <xsl:variable name="trimmed" select="normalize-space($text)"/>
    <xsl:choose>
      <xsl:when test="translate($trimmed, '0123456789.-', '') = '' and string(number($trimmed)) != 'NaN'">
        <xsl:variable name="digits" select="translate($trimmed, '-', '')"/>
        <xsl:variable name="fraction" select="substring-after($digits, '.')"/>
        <xsl:if test="starts-with($trimmed, '-')">-</xsl:if>
        <xsl:call-template name="thousands"><xsl:with-param name="digits" select="substring-before(concat($digits, '.'), '.')"/></xsl:call-template>
        <xsl:if test="$decimals != 0 or $fraction != ''">,<xsl:value-of select="$fraction"/><xsl:value-of select="substring('00', string-length($fraction) + 1, $decimals)"/></xsl:if>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="thousands">
    <xsl:param name="digits"/>
    <xsl:variable name="head" select="string-length($digits) - 3"/>
    <xsl:choose>
      <xsl:when test="$head &gt; 0">
        <xsl:call-template name="thousands"><xsl:with-param name="digits" select="substring($digits, 1, $head)"/></xsl:call-template>
        <xsl:text>&#160;</xsl:text><xsl:value-of select="substring($digits, $head + 1)"/>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$digits"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- Codes. One that is not known stays as it is. -->

  <!-- "|code=words|code=words|" -->
  <xsl:template name="code">
    <xsl:param name="words"/>
    <xsl:variable name="found" select="substring-before(substring-after($words, concat('|', normalize-space(.), '=')), '|')"/>
    <xsl:choose>
      <xsl:when test="$found != ''"><xsl:value-of select="$found"/></xsl:when>
      <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template mode="value" match="f:FormaPlatnosci">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=gotówka|2=karta|3=bon|4=czek|5=kredyt|6=przelew|7=mobilna|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:Rola">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=faktor|2=odbiorca|3=podmiot pierwotny|4=dodatkowy nabywca|5=wystawca faktury|6=dokonujący płatności|7=jednostka samorządu terytorialnego - wystawca|8=jednostka samorządu terytorialnego - odbiorca|9=członek grupy VAT - wystawca|10=członek grupy VAT - odbiorca|11=pracownik|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:RolaPU">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=organ egzekucyjny|2=komornik sądowy|3=przedstawiciel podatkowy|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:StatusInfoPodatnika">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=podatnik znajdujący się w stanie likwidacji|2=podatnik, który jest w trakcie postępowania restrukturyzacyjnego|3=podatnik znajdujący się w stanie upadłości|4=przedsiębiorstwo w spadku|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:TypKorekty">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=korekta skutkująca w dacie ujęcia faktury pierwotnej|2=korekta skutkująca w dacie wystawienia faktury korygującej|3=korekta skutkująca w dacie innej, w tym gdy dla różnych pozycji faktury korygującej daty te są różne|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:RachunekWlasnyBanku">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=rachunek banku lub SKOK do rozliczeń z tytułu nabywanych wierzytelności pieniężnych|2=rachunek banku lub SKOK do pobrania należności od nabywcy i przekazania jej dostawcy|3=rachunek banku lub SKOK prowadzony w ramach gospodarki własnej, niebędący rachunkiem rozliczeniowym|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:RodzajTransportu">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=transport morski|2=transport kolejowy|3=transport drogowy|4=transport lotniczy|5=przesyłka pocztowa|7=stałe instalacje przesyłowe|8=żegluga śródlądowa|</xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template mode="value" match="f:OpisLadunku">
    <xsl:call-template name="code"><xsl:with-param name="words">|1=bańka|2=beczka|3=butla|4=karton|5=kanister|6=klatka|7=kontener|8=kosz/koszyk|9=łubianka|10=opakowanie zbiorcze|11=paczka|12=pakiet|13=paleta|14=pojemnik|15=pojemnik do ładunków masowych stałych|16=pojemnik do ładunków masowych w postaci płynnej|17=pudełko|18=puszka|19=skrzynia|20=worek|</xsl:with-param></xsl:call-template>
  </xsl:template>

  <!-- Labels -->

  <xsl:template match="*" mode="label"><xsl:value-of select="local-name()"/></xsl:template>

  <xsl:template mode="label" match="f:KodFormularza">Formularz</xsl:template>
  <xsl:template mode="label" match="f:WariantFormularza">Wariant</xsl:template>
  <xsl:template mode="label" match="f:DataWytworzeniaFa">Wytworzono</xsl:template>
  <xsl:template mode="label" match="f:SystemInfo">System</xsl:template>

  <xsl:template mode="label" match="f:Podmiot1">Sprzedawca</xsl:template>
  <xsl:template mode="label" match="f:Podmiot2">Nabywca</xsl:template>
  <xsl:template mode="label" match="f:Podmiot3">Podmiot trzeci</xsl:template>
  <xsl:template mode="label" match="f:PodmiotUpowazniony">Podmiot upoważniony</xsl:template>
  <xsl:template mode="label" match="f:Podmiot1K">Sprzedawca przed korektą</xsl:template>
  <xsl:template mode="label" match="f:Podmiot2K">Nabywca przed korektą</xsl:template>
  <xsl:template mode="label" match="f:Rola | f:OpisRoli | f:RolaPU">Rola</xsl:template>
  <xsl:template mode="label" match="f:Udzial">Udział</xsl:template>
  <xsl:template mode="label" match="f:IDWew">Identyfikator wewnętrzny</xsl:template>
  <xsl:template mode="label" match="f:BrakID">Bez identyfikatora podatkowego</xsl:template>
  <xsl:template mode="label" match="f:PrefiksPodatnika">Prefiks VAT UE</xsl:template>
  <xsl:template mode="label" match="f:NrEORI">Numer EORI</xsl:template>
  <xsl:template mode="label" match="f:NrKlienta">Numer klienta</xsl:template>
  <xsl:template mode="label" match="f:IDNabywcy">Klucz nabywcy</xsl:template>
  <xsl:template mode="label" match="f:AdresKoresp">Adres korespondencyjny</xsl:template>
  <xsl:template mode="label" match="f:Email | f:EmailPU">E-mail</xsl:template>
  <xsl:template mode="label" match="f:Telefon | f:TelefonPU">Telefon</xsl:template>
  <xsl:template mode="label" match="f:StatusInfoPodatnika">Status</xsl:template>
  <xsl:template mode="label" match="f:JST">Faktura dotyczy jednostki podrzędnej JST</xsl:template>
  <xsl:template mode="label" match="f:GV">Faktura dotyczy członka grupy VAT</xsl:template>

  <xsl:template mode="label" match="f:KodWaluty">Waluta</xsl:template>
  <xsl:template mode="label" match="f:P_1">Data wystawienia</xsl:template>
  <xsl:template mode="label" match="f:P_1M">Miejsce wystawienia</xsl:template>
  <xsl:template mode="label" match="f:P_6 | f:P_6A">
    <xsl:choose>
      <xsl:when test="$kind = 'ZAL' or $kind = 'KOR_ZAL'">Data otrzymania zapłaty</xsl:when>
      <xsl:otherwise>Data dostawy lub wykonania usługi</xsl:otherwise>
    </xsl:choose>
  </xsl:template>
  <xsl:template mode="label" match="f:OkresFa">Okres, którego dotyczy faktura</xsl:template>
  <xsl:template mode="label" match="f:WZ">Dokument WZ</xsl:template>
  <xsl:template mode="label" match="f:KursWaluty | f:KursWalutyZ">Kurs waluty</xsl:template>
  <xsl:template mode="label" match="f:P_15">
    <xsl:choose>
      <xsl:when test="$kind = 'ZAL'">Kwota otrzymanej zapłaty</xsl:when>
      <xsl:when test="$kind = 'ROZ'">Kwota pozostała do zapłaty</xsl:when>
      <xsl:when test="starts-with($kind, 'KOR')">Kwota korekty ogółem</xsl:when>
      <xsl:otherwise>Kwota należności ogółem</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template mode="label" match="f:PrzyczynaKorekty">Przyczyna korekty</xsl:template>
  <xsl:template mode="label" match="f:TypKorekty">Skutek korekty</xsl:template>
  <xsl:template mode="label" match="f:OkresFaKorygowanej">Okres, którego dotyczy rabat</xsl:template>
  <xsl:template mode="label" match="f:NrFaKorygowany">Poprawny numer faktury korygowanej</xsl:template>
  <xsl:template mode="label" match="f:P_15ZK">Kwota przed korektą</xsl:template>
  <xsl:template mode="label" match="f:KursWalutyZK">Kurs waluty przed korektą</xsl:template>

  <xsl:template mode="label" match="f:UU_ID | f:UU_IDZ">Identyfikator wiersza</xsl:template>
  <xsl:template mode="label" match="f:IndeksZ">Indeks</xsl:template>
  <xsl:template mode="label" match="f:GTINZ">GTIN</xsl:template>
  <xsl:template mode="label" match="f:PKWiUZ">PKWiU</xsl:template>
  <xsl:template mode="label" match="f:CNZ">CN</xsl:template>
  <xsl:template mode="label" match="f:PKOBZ">PKOB</xsl:template>
  <xsl:template mode="label" match="f:GTUZ">GTU</xsl:template>
  <xsl:template mode="label" match="f:ProceduraZ">Procedura</xsl:template>
  <xsl:template mode="label" match="f:KwotaAkcyzy | f:KwotaAkcyzyZ">Akcyza w cenie</xsl:template>
  <xsl:template mode="label" match="f:WartoscZamowienia">Wartość zamówienia z podatkiem</xsl:template>

  <xsl:template mode="label" match="f:Obciazenia">Obciążenie</xsl:template>
  <xsl:template mode="label" match="f:Odliczenia">Odliczenie</xsl:template>
  <xsl:template mode="label" match="f:SumaObciazen">Suma obciążeń</xsl:template>
  <xsl:template mode="label" match="f:SumaOdliczen">Suma odliczeń</xsl:template>
  <xsl:template mode="label" match="f:DoZaplaty">Do zapłaty</xsl:template>
  <xsl:template mode="label" match="f:DoRozliczenia">Nadpłata do rozliczenia lub zwrotu</xsl:template>

  <xsl:template mode="label" match="f:Zaplacono">Zapłacono</xsl:template>
  <xsl:template mode="label" match="f:DataZaplaty">Data zapłaty</xsl:template>
  <xsl:template mode="label" match="f:TerminPlatnosci">Termin płatności</xsl:template>
  <xsl:template mode="label" match="f:RachunekBankowy">Rachunek bankowy</xsl:template>
  <xsl:template mode="label" match="f:RachunekBankowyFaktora">Rachunek faktora</xsl:template>
  <xsl:template mode="label" match="f:LinkDoPlatnosci">Link do płatności</xsl:template>
  <xsl:template mode="label" match="f:IPKSeF">Identyfikator płatności KSeF</xsl:template>

  <xsl:template mode="label" match="f:P_16">Metoda kasowa</xsl:template>
  <xsl:template mode="label" match="f:P_17">Samofakturowanie</xsl:template>
  <xsl:template mode="label" match="f:P_18">Odwrotne obciążenie</xsl:template>
  <xsl:template mode="label" match="f:P_18A">Mechanizm podzielonej płatności</xsl:template>
  <xsl:template mode="label" match="f:P_19">Dostawa towarów lub usługi zwolnione od podatku</xsl:template>
  <xsl:template mode="label" match="f:P_19A">Podstawa zwolnienia (ustawa lub akt wydany na jej podstawie)</xsl:template>
  <xsl:template mode="label" match="f:P_19B">Podstawa zwolnienia (dyrektywa 2006/112/WE)</xsl:template>
  <xsl:template mode="label" match="f:P_19C">Podstawa zwolnienia (inna)</xsl:template>
  <xsl:template mode="label" match="f:P_22">Wewnątrzwspólnotowa dostawa nowych środków transportu</xsl:template>
  <xsl:template mode="label" match="f:P_42_5">Występuje obowiązek, o którym mowa w art. 42 ust. 5 ustawy</xsl:template>
  <xsl:template mode="label" match="f:P_23">Procedura uproszczona: wewnątrzwspólnotowa transakcja trójstronna (art. 135 ust. 1 pkt 4 lit. b i c ustawy), drugi w kolejności podatnik</xsl:template>
  <xsl:template mode="label" match="f:P_PMarzy_2">Procedura marży dla biur podróży</xsl:template>
  <xsl:template mode="label" match="f:P_PMarzy_3_1">Procedura marży - towary używane</xsl:template>
  <xsl:template mode="label" match="f:P_PMarzy_3_2">Procedura marży - dzieła sztuki</xsl:template>
  <xsl:template mode="label" match="f:P_PMarzy_3_3">Procedura marży - przedmioty kolekcjonerskie i antyki</xsl:template>
  <xsl:template mode="label" match="f:FP">Faktura do paragonu (art. 109 ust. 3d ustawy)</xsl:template>
  <xsl:template mode="label" match="f:TP">Istnieją powiązania między nabywcą a sprzedawcą (TP)</xsl:template>
  <xsl:template mode="label" match="f:ZwrotAkcyzy">Informacja dla rolników ubiegających się o zwrot podatku akcyzowego zawartego w cenie oleju napędowego</xsl:template>

  <xsl:template mode="label" match="f:P_NrWierszaNST">Pozycja</xsl:template>
  <xsl:template mode="label" match="f:P_22A">Dopuszczenie do użytku</xsl:template>
  <xsl:template mode="label" match="f:P_22BMK">Marka</xsl:template>
  <xsl:template mode="label" match="f:P_22BMD">Model</xsl:template>
  <xsl:template mode="label" match="f:P_22BK">Kolor</xsl:template>
  <xsl:template mode="label" match="f:P_22BNR">Numer rejestracyjny</xsl:template>
  <xsl:template mode="label" match="f:P_22BRP">Rok produkcji</xsl:template>
  <xsl:template mode="label" match="f:P_22B">Przebieg</xsl:template>
  <xsl:template mode="label" match="f:P_22B1">VIN</xsl:template>
  <xsl:template mode="label" match="f:P_22B2">Numer nadwozia</xsl:template>
  <xsl:template mode="label" match="f:P_22B3">Numer podwozia</xsl:template>
  <xsl:template mode="label" match="f:P_22B4">Numer ramy</xsl:template>
  <xsl:template mode="label" match="f:P_22BT">Typ</xsl:template>
  <xsl:template mode="label" match="f:P_22C | f:P_22D">Liczba godzin używania</xsl:template>
  <xsl:template mode="label" match="f:P_22C1">Numer kadłuba</xsl:template>
  <xsl:template mode="label" match="f:P_22D1">Numer fabryczny</xsl:template>

  <xsl:template mode="label" match="f:NrPartiiTowaru">Numer partii towaru</xsl:template>
  <xsl:template mode="label" match="f:WarunkiDostawy">Warunki dostawy</xsl:template>
  <xsl:template mode="label" match="f:KursUmowny">Kurs umowny</xsl:template>
  <xsl:template mode="label" match="f:WalutaUmowna">Waluta umowna</xsl:template>
  <xsl:template mode="label" match="f:PodmiotPosredniczacy">Dostawa dokonana przez podmiot pośredniczący, o którym mowa w art. 22 ust. 2d ustawy</xsl:template>
  <xsl:template mode="label" match="f:RodzajTransportu | f:OpisInnegoTransportu">Rodzaj transportu</xsl:template>
  <xsl:template mode="label" match="f:NrZleceniaTransportu">Numer zlecenia</xsl:template>
  <xsl:template mode="label" match="f:OpisLadunku | f:OpisInnegoLadunku">Ładunek</xsl:template>
  <xsl:template mode="label" match="f:JednostkaOpakowania">Jednostka opakowania</xsl:template>
  <xsl:template mode="label" match="f:DataGodzRozpTransportu">Rozpoczęcie</xsl:template>
  <xsl:template mode="label" match="f:DataGodzZakTransportu">Zakończenie</xsl:template>
  <xsl:template mode="label" match="f:WysylkaZ">Wysyłka z</xsl:template>
  <xsl:template mode="label" match="f:WysylkaPrzez">Wysyłka przez</xsl:template>
  <xsl:template mode="label" match="f:WysylkaDo">Wysyłka do</xsl:template>
  <xsl:template mode="label" match="f:PelnaNazwa">Pełna nazwa</xsl:template>

  <!-- What is left. "shown": children that a section above prints; "inside": those that it opens, and that say for themselves. -->

  <xsl:template name="rest">
    <xsl:param name="shown" select="''"/>
    <xsl:param name="inside" select="''"/>
    <xsl:for-each select="*">
      <xsl:variable name="name" select="concat(' ', local-name(), ' ')"/>
      <xsl:choose>
        <xsl:when test="namespace-uri() != namespace-uri(/f:Faktura)"><xsl:apply-templates select="." mode="all"/></xsl:when>
        <xsl:when test="contains($inside, $name)"><xsl:apply-templates select="." mode="rest"/></xsl:when>
        <!-- A section takes the first of a name, and all of those that may be repeated. -->
        <xsl:when test="contains($shown, $name) and not(*) and (contains(' WZ NrPartiiTowaru Akapit WKom SKom ', $name) or not(preceding-sibling::*[local-name() = local-name(current())]))">
          <xsl:call-template name="attributes_left"/>
        </xsl:when>
        <xsl:otherwise><xsl:apply-templates select="." mode="all"/></xsl:otherwise>
      </xsl:choose>
    </xsl:for-each>
    <xsl:call-template name="attributes_left"/>
    <xsl:for-each select="text()[normalize-space(.) != '']"><xsl:call-template name="left"/></xsl:for-each>
  </xsl:template>

  <xsl:template name="attributes_left">
    <xsl:for-each select="@*[namespace-uri() = '' and not(contains(' kodSystemowy wersjaSchemy Typ ', concat(' ', local-name(), ' ')))]"><xsl:call-template name="left"/></xsl:for-each>
  </xsl:template>

  <xsl:template match="*" mode="all">
    <xsl:for-each select="@*"><xsl:call-template name="left"/></xsl:for-each>
    <xsl:for-each select="text()[normalize-space(.) != '']"><xsl:call-template name="left"/></xsl:for-each>
    <xsl:apply-templates select="*" mode="all"/>
  </xsl:template>

  <xsl:template name="left">
    <tr>
      <th>
        <xsl:for-each select="ancestor::*[parent::*]">
          <xsl:if test="position() != 1"> / </xsl:if>
          <xsl:value-of select="local-name()"/>
          <xsl:for-each select="f:NrWierszaFa | f:NrWierszaZam"> (<xsl:value-of select="."/>)</xsl:for-each>
        </xsl:for-each>
        <xsl:if test="not(self::text())"> / <xsl:value-of select="name()"/></xsl:if>
      </th>
      <td><xsl:value-of select="."/></td>
    </tr>
  </xsl:template>

  <xsl:template match="*" mode="rest"><xsl:apply-templates select="." mode="all"/></xsl:template>

  <xsl:template match="/f:Faktura" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="inside"> Naglowek Podmiot1 Podmiot2 Podmiot3 PodmiotUpowazniony Fa Stopka Zalacznik </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Naglowek" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> KodFormularza WariantFormularza DataWytworzeniaFa SystemInfo </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Podmiot1 | f:Podmiot2 | f:Podmiot3 | f:PodmiotUpowazniony | f:Podmiot1K | f:Podmiot2K" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> Rola RolaInna OpisRoli RolaPU Udzial PrefiksPodatnika NrEORI NrKlienta IDNabywcy StatusInfoPodatnika JST GV </xsl:with-param>
      <xsl:with-param name="inside"> DaneIdentyfikacyjne Adres AdresKoresp DaneKontaktowe </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:DaneIdentyfikacyjne" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Nazwa NIP IDWew KodUE NrVatUE KodKraju NrID BrakID </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Adres | f:AdresKoresp | f:AdresPrzewoznika | f:WysylkaZ | f:WysylkaPrzez | f:WysylkaDo" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> KodKraju AdresL1 AdresL2 GLN </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:DaneKontaktowe" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Email Telefon EmailPU TelefonPU </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Fa" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> KodWaluty P_1 P_1M P_2 WZ P_6 P_13_1 P_13_2 P_13_3 P_13_4 P_13_5 P_13_6_1 P_13_6_2 P_13_6_3 P_13_7 P_13_8 P_13_9 P_13_10 P_13_11 P_14_1 P_14_2 P_14_3 P_14_4 P_14_5 P_14_1W P_14_2W P_14_3W P_14_4W P_15 KursWalutyZ RodzajFaktury PrzyczynaKorekty TypKorekty OkresFaKorygowanej NrFaKorygowany P_15ZK KursWalutyZK FP TP ZwrotAkcyzy </xsl:with-param>
      <xsl:with-param name="inside"> OkresFa Adnotacje DaneFaKorygowanej Podmiot1K Podmiot2K ZaliczkaCzesciowa DodatkowyOpis FakturaZaliczkowa FaWiersz Rozliczenie Platnosc WarunkiTransakcji Zamowienie </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:OkresFa" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_6_Od P_6_Do </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Adnotacje" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> P_16 P_17 P_18 P_18A P_23 </xsl:with-param>
      <xsl:with-param name="inside"> Zwolnienie NoweSrodkiTransportu PMarzy </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Zwolnienie" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_19 P_19A P_19B P_19C P_19N </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:NoweSrodkiTransportu" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_22 P_42_5 P_22N </xsl:with-param><xsl:with-param name="inside"> NowySrodekTransportu </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:NowySrodekTransportu" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_NrWierszaNST P_22A P_22BMK P_22BMD P_22BK P_22BNR P_22BRP P_22B P_22B1 P_22B2 P_22B3 P_22B4 P_22BT P_22C P_22C1 P_22D P_22D1 </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:PMarzy" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_PMarzy P_PMarzy_2 P_PMarzy_3_1 P_PMarzy_3_2 P_PMarzy_3_3 P_PMarzyN </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:DaneFaKorygowanej" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> DataWystFaKorygowanej NrFaKorygowanej NrKSeF NrKSeFFaKorygowanej NrKSeFN </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:ZaliczkaCzesciowa" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> P_6Z P_15Z KursWalutyZW </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:DodatkowyOpis" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NrWiersza Klucz Wartosc </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:FakturaZaliczkowa" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NrKSeFZN NrFaZaliczkowej NrKSeFFaZaliczkowej </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:FaWiersz" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NrWierszaFa UU_ID P_6A P_7 Indeks GTIN PKWiU CN PKOB P_8A P_8B P_9A P_9B P_10 P_11 P_11A P_11Vat P_12 P_12_XII P_12_Zal_15 KwotaAkcyzy GTU Procedura KursWaluty StanPrzed </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Rozliczenie" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> SumaObciazen SumaOdliczen DoZaplaty DoRozliczenia </xsl:with-param><xsl:with-param name="inside"> Obciazenia Odliczenia </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Obciazenia | f:Odliczenia" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Kwota Powod </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Platnosc" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> Zaplacono DataZaplaty ZnacznikZaplatyCzesciowej FormaPlatnosci PlatnoscInna OpisPlatnosci LinkDoPlatnosci IPKSeF </xsl:with-param>
      <xsl:with-param name="inside"> ZaplataCzesciowa TerminPlatnosci RachunekBankowy RachunekBankowyFaktora Skonto </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:ZaplataCzesciowa" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> KwotaZaplatyCzesciowej DataZaplatyCzesciowej FormaPlatnosci PlatnoscInna OpisPlatnosci </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:TerminPlatnosci" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Termin </xsl:with-param><xsl:with-param name="inside"> TerminOpis </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:TerminOpis" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Ilosc Jednostka ZdarzeniePoczatkowe </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:RachunekBankowy | f:RachunekBankowyFaktora" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NrRB SWIFT RachunekWlasnyBanku NazwaBanku OpisRachunku </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Skonto" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> WarunkiSkonta WysokoscSkonta </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:WarunkiTransakcji" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> NrPartiiTowaru WarunkiDostawy KursUmowny WalutaUmowna PodmiotPosredniczacy </xsl:with-param>
      <xsl:with-param name="inside"> Umowy Zamowienia Transport </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Umowy | f:Zamowienia" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> DataUmowy NrUmowy DataZamowienia NrZamowienia </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Transport" mode="rest">
    <xsl:call-template name="rest">
      <xsl:with-param name="shown"> RodzajTransportu TransportInny OpisInnegoTransportu NrZleceniaTransportu OpisLadunku LadunekInny OpisInnegoLadunku JednostkaOpakowania DataGodzRozpTransportu DataGodzZakTransportu </xsl:with-param>
      <xsl:with-param name="inside"> Przewoznik WysylkaZ WysylkaPrzez WysylkaDo </xsl:with-param>
    </xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Przewoznik" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="inside"> DaneIdentyfikacyjne AdresPrzewoznika </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Zamowienie" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> WartoscZamowienia </xsl:with-param><xsl:with-param name="inside"> ZamowienieWiersz </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:ZamowienieWiersz" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NrWierszaZam UU_IDZ P_7Z IndeksZ GTINZ PKWiUZ CNZ PKOBZ P_8AZ P_8BZ P_9AZ P_11NettoZ P_11VatZ P_12Z P_12Z_XII P_12Z_Zal_15 GTUZ ProceduraZ KwotaAkcyzyZ StanPrzedZ </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Stopka" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="inside"> Informacje Rejestry </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Informacje | f:Rejestry" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> StopkaFaktury PelnaNazwa KRS REGON BDO </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Zalacznik" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="inside"> BlokDanych </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:BlokDanych" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> ZNaglowek </xsl:with-param><xsl:with-param name="inside"> MetaDane Tekst Tabela </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:MetaDane | f:TMetaDane | f:Tekst" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> ZKlucz ZWartosc TKlucz TWartosc Akapit </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Tabela" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> Opis </xsl:with-param><xsl:with-param name="inside"> TMetaDane TNaglowek Wiersz Suma </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:TNaglowek" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="inside"> Kol </xsl:with-param></xsl:call-template>
  </xsl:template>
  <xsl:template match="f:Kol | f:Wiersz | f:Suma" mode="rest">
    <xsl:call-template name="rest"><xsl:with-param name="shown"> NKom WKom SKom </xsl:with-param></xsl:call-template>
  </xsl:template>

  <!-- The look: black on white, nothing fetched, no script. -->

  <xsl:template name="style">
    <style>
      body { margin: 0; background: #fff; color: #000; font: 14px/1.4 "Segoe UI", "DejaVu Sans", Arial, sans-serif; overflow-wrap: break-word; }
      main { max-width: 64em; margin: 0 auto; padding: 1.5em; }
      h1 { font-size: 1.7em; line-height: 1.2; margin: 0; }
      h2 { font-size: 1.05em; margin: 0 0 .4em; }
      h3 { font-size: 1em; margin: .8em 0 .3em; }
      p { margin: .3em 0; } ul { margin: 0; padding-left: 1.3em; }
      section { margin: 1.4em 0; }
      .label { color: #444; font-weight: normal; } .label:after { content: ": "; }
      .top { display: flex; gap: 2em; justify-content: space-between; border-bottom: 2px solid #000; padding-bottom: 1em; }
      .number { font-size: 1.3em; margin-bottom: .6em; }
      .ksef { display: flex; gap: 1em; flex: 0 1 38em; font-size: .85em; overflow-wrap: anywhere; } .ksef .label { display: block; }
      .ksef img { flex: none; width: 10em; height: auto; align-self: flex-start; }
      .ksef a { color: #000; }
      .parties { display: flex; flex-wrap: wrap; gap: 1em; margin: 1.2em 0; }
      .party { overflow-wrap: anywhere; flex: 1 1 40%; border: 1px solid #999; padding: .7em .9em; box-sizing: border-box; }
      .party h2 { font-size: .85em; text-transform: uppercase; letter-spacing: .05em; color: #444; }
      .name { font-weight: bold; } .address { margin: .2em 0; } .inner { margin-left: 1.2em; }
      .block { border-left: 3px solid #999; padding-left: .8em; margin: .6em 0; }
      .words { font-weight: bold; }
      table { border-collapse: collapse; width: 100%; margin: .4em 0; }
      th, td { padding: .3em .45em; vertical-align: top; text-align: left; border-bottom: 1px solid #bbb; }
      td, .pairs th { overflow-wrap: anywhere; } thead th { overflow-wrap: normal; } tbody th { overflow-wrap: break-word; }
      thead th { border-bottom: 2px solid #000; font-size: .88em; vertical-align: bottom; }
      tbody th { font-weight: normal; }
      .sum th, .sum td { font-weight: bold; border-bottom: 0; } .sum tr:first-child th, .sum tr:first-child td { border-top: 2px solid #000; }
      .n { text-align: right; } td.n { white-space: nowrap; font-variant-numeric: tabular-nums; }
      .lines td.text { min-width: 12em; } .lines td:first-child { white-space: nowrap; }
      .long { font-size: .85em; } .long td.n, .attachment td.n { white-space: normal; }
      .pairs th { width: 35%; color: #444; }
      .before td { background: #f2f2f2; }
      .state { font-size: .85em; font-style: italic; }
      .details, .form { font-size: .85em; } .inline { display: inline-block; margin-right: .9em; }
      .totals table { width: auto; min-width: 60%; margin-left: auto; } .totals h2 { text-align: right; }
      .due { text-align: right; font-size: 1.3em; margin: .5em 0; }
      .foot { white-space: pre-line; }
      .form { color: #444; border-top: 1px solid #bbb; padding-top: .6em; margin-top: 2em; }
      @media screen and (max-width: 640px) {
        main { padding: 1em; }
        .top { display: block; } .ksef { flex-wrap: wrap; margin-top: 1em; } .party { flex-basis: 100%; }
        thead { display: none; } table, tbody, tr, td, tbody th { display: block; width: auto; }
        tr { border-bottom: 1px solid #000; padding: .4em 0; } th, td, .pairs th { border: 0; padding: .1em 0; width: auto; }
        td.n { text-align: left; white-space: normal; } td[data-label]:before { content: attr(data-label) ": "; color: #444; } td:empty { display: none; }
        .lines td.text { font-weight: bold; } .lines .details, .lines .state { font-weight: normal; }
        .before td { background: none; } tr.before { background: #f2f2f2; }
        .totals h2, .due { text-align: left; } .totals table { min-width: 0; } .totals tbody th { font-weight: bold; }
      }
      @media print {
        body { font-size: 9pt; } main { max-width: none; padding: 0; } section, .parties { margin: 1em 0; } .form { margin-top: 1em; }
        thead { display: table-header-group; } tr, .party, .block, .due, .totals { break-inside: avoid; page-break-inside: avoid; }
        h2, h3 { break-after: avoid; page-break-after: avoid; }
        a { text-decoration: none; }
      }
      @page { size: A4; margin: 14mm 12mm; @bottom-right { content: counter(page) " / " counter(pages); font-size: 8pt; } }
    </style>
  </xsl:template>
</xsl:stylesheet>
