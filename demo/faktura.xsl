<?xml version="1.0" encoding="UTF-8"?>
<!-- A readable page of an FA(3) invoice: parties, lines, totals by rate, amount due, payment. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:f="http://crd.gov.pl/wzor/2025/06/25/13775/" exclude-result-prefixes="f">
  <xsl:output method="html" encoding="UTF-8" indent="yes"/>
  <xsl:param name="ksef_number"/>
  <xsl:decimal-format name="pl" decimal-separator="," grouping-separator="&#160;"/>

  <xsl:template match="/f:Faktura">
    <html lang="pl">
      <head>
        <title><xsl:value-of select="f:Fa/f:P_2"/></title>
        <style>
          body { font: 15px/1.4 "DejaVu Sans", Arial, sans-serif; color: #1c2733; max-width: 60em; margin: 2em auto; padding: 0 1em; }
          h1 { font-size: 1.5em; margin: 0; } .ksef { color: #4a5a6a; }
          .parties { display: flex; gap: 2em; margin: 1.5em 0; } .parties > div { flex: 1; }
          h2 { font-size: .85em; text-transform: uppercase; letter-spacing: .06em; color: #4a5a6a; margin: 0 0 .3em; }
          table { border-collapse: collapse; width: 100%; margin: 1em 0; }
          th { text-align: left; border-bottom: 2px solid #1c2733; } td { border-bottom: 1px solid #d5dde5; }
          th, td { padding: .35em .5em; vertical-align: top; } .n { text-align: right; white-space: nowrap; }
          .totals { width: auto; margin-left: auto; } .due { font-size: 1.3em; text-align: right; }
        </style>
      </head>
      <body>
        <h1>
          <xsl:choose>
            <xsl:when test="f:Fa/f:RodzajFaktury = 'KOR'">Faktura korygująca </xsl:when>
            <xsl:otherwise>Faktura </xsl:otherwise>
          </xsl:choose>
          <xsl:value-of select="f:Fa/f:P_2"/>
        </h1>
        <div class="ksef">
          <xsl:if test="$ksef_number != ''">Numer KSeF: <xsl:value-of select="$ksef_number"/><br/></xsl:if>
          Data wystawienia: <xsl:value-of select="f:Fa/f:P_1"/>
          <xsl:if test="f:Fa/f:P_6"> · Data dostawy: <xsl:value-of select="f:Fa/f:P_6"/></xsl:if>
        </div>
        <div class="parties">
          <div><h2>Sprzedawca</h2><xsl:apply-templates select="f:Podmiot1"/></div>
          <div><h2>Nabywca</h2><xsl:apply-templates select="f:Podmiot2"/></div>
        </div>
        <xsl:if test="f:Fa/f:PrzyczynaKorekty">
          <p>Przyczyna korekty: <xsl:value-of select="f:Fa/f:PrzyczynaKorekty"/>
          (faktura <xsl:value-of select="f:Fa/f:DaneFaKorygowanej/f:NrFaKorygowanej"/>)</p>
        </xsl:if>
        <table>
          <tr><th>Lp.</th><th>Nazwa</th><th class="n">Ilość</th><th class="n">Cena netto</th><th class="n">Netto</th><th class="n">VAT</th></tr>
          <xsl:apply-templates select="f:Fa/f:FaWiersz"/>
        </table>
        <table class="totals">
          <tr><th>Stawka</th><th class="n">Netto</th><th class="n">VAT</th></tr>
          <xsl:call-template name="rate"><xsl:with-param name="name" select="'23%'"/><xsl:with-param name="net" select="f:Fa/f:P_13_1"/><xsl:with-param name="vat" select="f:Fa/f:P_14_1"/></xsl:call-template>
          <xsl:call-template name="rate"><xsl:with-param name="name" select="'8%'"/><xsl:with-param name="net" select="f:Fa/f:P_13_2"/><xsl:with-param name="vat" select="f:Fa/f:P_14_2"/></xsl:call-template>
          <xsl:call-template name="rate"><xsl:with-param name="name" select="'5%'"/><xsl:with-param name="net" select="f:Fa/f:P_13_3"/><xsl:with-param name="vat" select="f:Fa/f:P_14_3"/></xsl:call-template>
        </table>
        <p class="due">Razem: <b><xsl:value-of select="format-number(f:Fa/f:P_15, '#&#160;##0,00', 'pl')"/>&#160;<xsl:value-of select="f:Fa/f:KodWaluty"/></b></p>
        <xsl:if test="f:Fa/f:Platnosc">
          <p>Termin płatności: <xsl:value-of select="f:Fa/f:Platnosc/f:TerminPlatnosci/f:Termin"/>,
          rachunek <xsl:value-of select="f:Fa/f:Platnosc/f:RachunekBankowy/f:NrRB"/></p>
        </xsl:if>
        <p class="ksef"><xsl:value-of select="f:Stopka/f:Informacje/f:StopkaFaktury"/></p>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="f:Podmiot1 | f:Podmiot2">
    <b><xsl:value-of select="f:DaneIdentyfikacyjne/f:Nazwa"/></b><br/>
    <xsl:value-of select="f:Adres/f:AdresL1"/><br/>
    <xsl:value-of select="f:Adres/f:AdresL2"/><br/>
    NIP <xsl:value-of select="f:DaneIdentyfikacyjne/f:NIP"/>
  </xsl:template>

  <xsl:template match="f:FaWiersz">
    <tr>
      <td><xsl:value-of select="f:NrWierszaFa"/></td>
      <td><xsl:value-of select="f:P_7"/><xsl:if test="f:StanPrzed = 1"> (stan przed korektą)</xsl:if></td>
      <td class="n"><xsl:value-of select="f:P_8B"/>&#160;<xsl:value-of select="f:P_8A"/></td>
      <td class="n"><xsl:value-of select="format-number(f:P_9A, '#&#160;##0,00', 'pl')"/></td>
      <td class="n"><xsl:value-of select="format-number(f:P_11, '#&#160;##0,00', 'pl')"/></td>
      <td class="n"><xsl:value-of select="f:P_12"/>%</td>
    </tr>
  </xsl:template>

  <xsl:template name="rate">
    <xsl:param name="name"/><xsl:param name="net"/><xsl:param name="vat"/>
    <xsl:if test="$net">
      <tr><td><xsl:value-of select="$name"/></td>
      <td class="n"><xsl:value-of select="format-number($net, '#&#160;##0,00', 'pl')"/></td>
      <td class="n"><xsl:value-of select="format-number($vat, '#&#160;##0,00', 'pl')"/></td></tr>
    </xsl:if>
  </xsl:template>
</xsl:stylesheet>
